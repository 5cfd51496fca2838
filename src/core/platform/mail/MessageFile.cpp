#include "core/platform/mail/MessageFile.h"

#include <vmime/vmime.hpp>
#include <vmime/contentDispositionField.hpp>
#include <vmime/contentTypeField.hpp>

#include <cstring>

namespace tarnby::mailnet {

namespace {

constexpr qint64 MaxHeaderBytes = 1 << 20;
constexpr int MaxDepth = 20;
constexpr size_t MaxParts = 10000;
constexpr qint64 LinePiece = 64 * 1024;

// Reads one line (or the first LinePiece bytes of a longer one) from the
// file's current position, not past end.
qint64 readPiece(QFile &file, qint64 at, qint64 end, QByteArray &buffer)
{
    const qint64 room = std::min(LinePiece, end - at);
    if (room <= 0)
        return 0;
    const qint64 n = file.readLine(buffer.data(), room + 1);
    if (n < 0)
        throw vmime::exception("cannot read the message file: " + file.errorString().toStdString());
    return n;
}

// The header block that starts at pos, and where the body after its blank
// line starts.
std::shared_ptr<vmime::header> readHeader(QFile &file, qint64 pos, qint64 end, qint64 *bodyStart)
{
    QByteArray buffer(LinePiece + 1, Qt::Uninitialized);
    std::string text;
    qint64 at = pos;
    bool lineStart = true;
    *bodyStart = end;
    file.seek(pos);
    while (at < end) {
        const qint64 n = readPiece(file, at, end, buffer);
        if (n == 0)
            break;
        const char *line = buffer.constData();
        at += n;
        if (lineStart && ((n == 1 && line[0] == '\n') || (n == 2 && line[0] == '\r' && line[1] == '\n'))) {
            *bodyStart = at;
            break;
        }
        text.append(line, size_t(n));
        if (qint64(text.size()) > MaxHeaderBytes)
            throw vmime::exception("a part of the message has a header of more than 1 MB");
        lineStart = line[n - 1] == '\n';
    }
    auto header = std::make_shared<vmime::header>();
    header->parse(text);
    return header;
}

std::string lower(std::string s)
{
    for (char &c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

QString wordToQString(const vmime::word &w)
{
    const std::string utf8 = w.getConvertedText(vmime::charsets::UTF_8);
    return QString::fromUtf8(utf8.data(), qsizetype(utf8.size()));
}

MessageLeaf classify(const std::shared_ptr<vmime::header> &header, qint64 start, qint64 end)
{
    MessageLeaf leaf;
    leaf.header = header;
    leaf.bodyStart = start;
    leaf.bodyEnd = end;
    vmime::mediaType type(vmime::mediaTypes::TEXT, vmime::mediaTypes::TEXT_PLAIN);
    std::shared_ptr<vmime::contentTypeField> typeField;
    if (auto field = header->findField(vmime::fields::CONTENT_TYPE)) {
        typeField = std::dynamic_pointer_cast<vmime::contentTypeField>(field);
        if (auto value = field->getValue<vmime::mediaType>())
            type = *value;
    }
    bool attachmentDisposition = false;
    if (auto field = header->findField(vmime::fields::CONTENT_DISPOSITION)) {
        if (auto value = field->getValue<vmime::contentDisposition>())
            attachmentDisposition = lower(value->getName()) == vmime::contentDispositionTypes::ATTACHMENT;
        if (auto disposition = std::dynamic_pointer_cast<vmime::contentDispositionField>(field);
            disposition && disposition->hasFilename())
            leaf.name = wordToQString(disposition->getFilename());
    }
    if (leaf.name.isEmpty() && typeField && typeField->hasParameter("name"))
        leaf.name = wordToQString(typeField->findParameter("name")->getValue());
    const bool text = lower(type.getType()) == vmime::mediaTypes::TEXT;
    leaf.attachment = attachmentDisposition || !leaf.name.isEmpty() || !text;
    leaf.plainText = !leaf.attachment && lower(type.getSubType()) == vmime::mediaTypes::TEXT_PLAIN;
    return leaf;
}

void scanPart(QFile &file, const std::shared_ptr<vmime::header> &header, qint64 bodyStart, qint64 end, int depth,
              MessageFile &out)
{
    if (depth > MaxDepth)
        throw vmime::exception("the parts of the message are nested too deep");
    if (out.leaves.size() >= MaxParts)
        throw vmime::exception("the message has too many parts");
    std::string boundary;
    if (auto field = std::dynamic_pointer_cast<vmime::contentTypeField>(header->findField(vmime::fields::CONTENT_TYPE))) {
        auto type = field->getValue<vmime::mediaType>();
        if (type && lower(type->getType()) == vmime::mediaTypes::MULTIPART && field->hasBoundary())
            boundary = "--" + field->getBoundary();
    }
    if (boundary.size() <= 2) {
        out.leaves.push_back(classify(header, bodyStart, end));
        return;
    }

    // The parts lie between delimiter lines: "--" boundary, and "--"
    // boundary "--" after the last. The line end before a delimiter belongs
    // to the delimiter.
    std::vector<std::pair<qint64, qint64>> parts;
    QByteArray buffer(LinePiece + 1, Qt::Uninitialized);
    qint64 at = bodyStart;
    qint64 partStart = -1;
    int previousLineEnd = 0;
    bool lineStart = true;
    bool closed = false;
    file.seek(bodyStart);
    while (at < end && !closed) {
        const qint64 lineAt = at;
        const qint64 n = readPiece(file, at, end, buffer);
        if (n == 0)
            break;
        at += n;
        const char *line = buffer.constData();
        const bool wasLineStart = lineStart;
        lineStart = line[n - 1] == '\n';
        if (wasLineStart && n >= qint64(boundary.size()) && std::memcmp(line, boundary.data(), boundary.size()) == 0) {
            qint64 restEnd = n;
            while (restEnd > qint64(boundary.size()) && std::strchr(" \t\r\n", line[restEnd - 1]))
                --restEnd;
            const std::string rest(line + boundary.size(), size_t(restEnd - qint64(boundary.size())));
            if (rest.empty() || rest == "--") {
                if (partStart >= 0)
                    parts.emplace_back(partStart, std::max(partStart, lineAt - previousLineEnd));
                partStart = at;
                closed = rest == "--";
                previousLineEnd = 0;
                continue;
            }
        }
        previousLineEnd = lineStart ? (n >= 2 && line[n - 2] == '\r' ? 2 : 1) : 0;
    }
    if (partStart >= 0 && !closed)
        parts.emplace_back(partStart, end); // no closing delimiter: the part runs to the end
    if (parts.size() > MaxParts)
        throw vmime::exception("the message has too many parts");
    for (const auto &[start, stop] : parts) {
        qint64 partBody = 0;
        auto partHeader = readHeader(file, start, stop, &partBody);
        scanPart(file, partHeader, partBody, stop, depth + 1, out);
    }
}

// The bytes of the file between two places.
class RegionStream : public vmime::utility::inputStream
{
public:
    RegionStream(QFile &file, qint64 start, qint64 end) : m_file(file), m_start(start), m_end(end) { reset(); }
    bool eof() const override { return m_at >= m_end; }
    void reset() override
    {
        m_at = m_start;
        m_file.seek(m_start);
    }
    size_t read(vmime::byte_t *const data, const size_t count) override
    {
        const qint64 want = std::min<qint64>(qint64(count), m_end - m_at);
        if (want <= 0)
            return 0;
        const qint64 n = m_file.read(reinterpret_cast<char *>(data), want);
        if (n <= 0) {
            if (n < 0)
                throw vmime::exception("cannot read the message file: " + m_file.errorString().toStdString());
            m_at = m_end; // the file is shorter than it was
            return 0;
        }
        m_at += n;
        return size_t(n);
    }
    size_t skip(const size_t count) override
    {
        const qint64 step = std::min<qint64>(qint64(count), m_end - m_at);
        m_at += step;
        m_file.seek(m_at);
        return size_t(step);
    }

private:
    QFile &m_file;
    qint64 m_start;
    qint64 m_end;
    qint64 m_at = 0;
};

} // namespace

MessageFile scanMessage(QFile &file)
{
    MessageFile message;
    const qint64 size = file.size();
    qint64 bodyStart = 0;
    message.header = readHeader(file, 0, size, &bodyStart);
    scanPart(file, message.header, bodyStart, size, 0, message);
    return message;
}

void decodeLeaf(QFile &file, const MessageLeaf &leaf, vmime::utility::outputStream &out)
{
    RegionStream in(file, leaf.bodyStart, leaf.bodyEnd);
    std::string encoding;
    if (auto field = leaf.header->findField(vmime::fields::CONTENT_TRANSFER_ENCODING)) {
        if (auto value = field->getValue<vmime::encoding>())
            encoding = lower(value->getName());
    }
    if (encoding == vmime::encodingTypes::BASE64 || encoding == vmime::encodingTypes::QUOTED_PRINTABLE
        || encoding == vmime::encodingTypes::UUENCODE || encoding == "x-uuencode") {
        vmime::utility::encoder::encoderFactory::getInstance()->create(encoding)->decode(in, out);
        return;
    }
    // 7bit, 8bit, binary, or an encoding nobody knows: the bytes as they are.
    vmime::byte_t block[64 * 1024];
    while (const size_t n = in.read(block, sizeof block))
        out.write(block, n);
}

} // namespace tarnby::mailnet
