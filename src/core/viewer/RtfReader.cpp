#include "core/viewer/RtfReader.h"

#include "core/viewer/TextFile.h"

#include <QColor>
#include <QHash>
#include <QImage>
#include <QSet>
#include <QStringDecoder>
#include <QTextBlockFormat>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextImageFormat>
#include <QUrl>

#include <cctype>
#include <climits>
#include <memory>
#include <unordered_map>

namespace tarnby::viewer {

namespace {

// Twips to the pixels of a 96 DPI page, the unit QTextDocument's margins use.
constexpr double TwipsPerPixel = 15.0;

// The code page of a font's character set number.
int codepageOfCharset(int charset, int documentCodepage)
{
    switch (charset) {
    case 0:
    case 1:
    case 2: // symbol fonts: the bytes are glyph numbers, read as the document's
        return documentCodepage;
    case 77:
        return 10000;
    case 78:
    case 128:
        return 932;
    case 129:
        return 949;
    case 134:
        return 936;
    case 136:
        return 950;
    case 161:
        return 1253;
    case 162:
        return 1254;
    case 163:
        return 1258;
    case 177:
        return 1255;
    case 178:
        return 1256;
    case 186:
        return 1257;
    case 204:
        return 1251;
    case 222:
        return 874;
    case 238:
        return 1250;
    case 254:
        return 437;
    case 255:
        return 850;
    default:
        return documentCodepage;
    }
}

QByteArray codecName(int codepage)
{
    switch (codepage) {
    case 437:
    case 850:
    case 852:
    case 866:
        return "IBM" + QByteArray::number(codepage);
    case 874:
        return "windows-874";
    case 932:
        return "Shift_JIS";
    case 936:
        return "GBK";
    case 949:
        return "windows-949";
    case 950:
        return "Big5";
    case 10000:
        return "macintosh";
    default:
        if (codepage >= 1250 && codepage <= 1258)
            return "windows-" + QByteArray::number(codepage);
        return {};
    }
}

enum class Destination { Normal, Skip, FontTable, ColorTable, Picture };

enum class PictureType { None, Png, Jpeg, Other };

struct State {
    Destination dest = Destination::Normal;
    int font = -1;
    int fontSize = 24; // half points
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strike = false;
    bool hidden = false;
    int capitals = 0; // 1 all caps, 2 small caps
    int verticalAlign = 0; // 1 superscript, 2 subscript
    int foreground = 0;
    int background = 0;
    int unicodeSkip = 1;
    // Paragraph properties, reset by \pard.
    Qt::Alignment alignment = Qt::AlignLeft;
    int leftIndent = 0, rightIndent = 0, firstIndent = 0, spaceBefore = 0, spaceAfter = 0;

    void resetCharacter(int defaultFont)
    {
        font = defaultFont;
        fontSize = 24;
        bold = italic = underline = strike = hidden = false;
        capitals = verticalAlign = 0;
        foreground = background = 0;
    }
    void resetParagraph()
    {
        alignment = Qt::AlignLeft;
        leftIndent = rightIndent = firstIndent = spaceBefore = spaceAfter = 0;
    }
};

struct FontEntry {
    QString name;
    int charset = -1;
};

// Destinations whose content is not part of the shown text.
const QSet<QByteArray> &skippedDestinations()
{
    static const QSet<QByteArray> set = {
        "stylesheet", "info",      "header",    "footer",      "headerl",   "headerr",     "headerf",
        "footerl",    "footerr",   "footerf",   "xe",          "tc",        "footnote",    "annotation",
        "atnid",      "atnauthor", "fldinst",   "themedata",   "colorschememapping", "listtable",
        "listoverridetable", "rsidtbl", "generator", "latentstyles", "datastore", "xmlnstbl", "pn",
        "filetbl",    "revtbl",    "nonshppict", "objdata",    "bkmkstart", "bkmkend",     "template",
        "ftnsep",     "ftnsepc",   "ftncn",     "aftnsep",     "aftnsepc",  "aftncn",      "docvar",
        "userprops",  "pgdsctbl",  "pntxta",      "pntxtb",    "falt",        "panose",
    };
    return set;
}

// Ignorable destinations (after "\*") that hold shown content all the same.
bool isKnownStarredDestination(const QByteArray &word)
{
    return word == "shppict";
}

char16_t specialCharacter(const QByteArray &word)
{
    static const QHash<QByteArray, char16_t> table = {
        {"emdash", 0x2014},    {"endash", 0x2013},    {"bullet", 0x2022},  {"lquote", 0x2018},
        {"rquote", 0x2019},    {"ldblquote", 0x201C}, {"rdblquote", 0x201D}, {"emspace", 0x2003},
        {"enspace", 0x2002},   {"qmspace", 0x2005},   {"line", 0x2028},    {"tab", 0x0009},
    };
    return table.value(word, 0);
}

class Parser
{
public:
    Parser(const QByteArray &data, QTextDocument *doc, const RtfLimits &limits)
        : m_data(data)
        , m_doc(doc)
        , m_cursor(doc)
        , m_limits(limits)
    {
    }

    void run();

private:
    // Tokens.
    void groupOpen();
    void groupClose();
    void controlWord(const QByteArray &word, bool hasParam, int param);
    void controlSymbol(char c);
    void textByte(char c);
    void hexByte(uchar b);
    void binaryData(qsizetype length);

    bool consumeSkippedFallback();
    void flushBytes();
    void flushRun();
    void paragraph();
    void appendChar(char16_t c);
    void finishFontEntry();
    void finishPicture();
    int currentCodepage() const;
    QString decode(const QByteArray &bytes, int codepage);
    QTextCharFormat charFormat() const;
    QTextBlockFormat blockFormat() const;

    const QByteArray &m_data;
    qsizetype m_pos = 0;
    QTextDocument *m_doc;
    QTextCursor m_cursor;
    RtfLimits m_limits;

    QList<State> m_stack;
    State m_state;
    int m_overflowDepth = 0;
    bool m_starPending = false;
    int m_skipChars = 0;

    int m_documentCodepage = 1252;
    int m_defaultFont = -1;
    QHash<int, FontEntry> m_fonts;
    int m_fontNumber = -1;
    FontEntry m_fontEntry;
    QByteArray m_fontName;
    QList<QColor> m_colors;
    int m_red = -1, m_green = -1, m_blue = -1;

    QByteArray m_bytes;
    QString m_run;
    bool m_lastWasCell = false;

    PictureType m_pictureType = PictureType::None;
    QByteArray m_pictureHex;
    QByteArray m_pictureBinary;
    int m_picW = 0, m_picH = 0, m_picWGoal = 0, m_picHGoal = 0, m_scaleX = 100, m_scaleY = 100;
    int m_pictureCount = 0;

    std::unordered_map<int, std::unique_ptr<QStringDecoder>> m_decoders;
};

void Parser::run()
{
    const qsizetype n = m_data.size();
    while (m_pos < n) {
        const char c = m_data[m_pos++];
        if (c == '{') {
            groupOpen();
        } else if (c == '}') {
            groupClose();
        } else if (c == '\\') {
            if (m_pos >= n)
                break;
            const char next = m_data[m_pos];
            if ((next >= 'a' && next <= 'z') || (next >= 'A' && next <= 'Z')) {
                const qsizetype start = m_pos;
                while (m_pos < n && m_pos - start < 32
                       && ((m_data[m_pos] >= 'a' && m_data[m_pos] <= 'z') || (m_data[m_pos] >= 'A' && m_data[m_pos] <= 'Z')))
                    ++m_pos;
                const QByteArray word = m_data.mid(start, m_pos - start);
                bool negative = false;
                bool hasParam = false;
                qint64 param = 0;
                if (m_pos < n && m_data[m_pos] == '-' && m_pos + 1 < n && m_data[m_pos + 1] >= '0'
                    && m_data[m_pos + 1] <= '9') {
                    negative = true;
                    ++m_pos;
                }
                int digits = 0;
                while (m_pos < n && m_data[m_pos] >= '0' && m_data[m_pos] <= '9') {
                    if (digits < 10)
                        param = param * 10 + (m_data[m_pos] - '0');
                    ++digits;
                    ++m_pos;
                    hasParam = true;
                }
                if (m_pos < n && m_data[m_pos] == ' ')
                    ++m_pos;
                param = std::clamp<qint64>(negative ? -param : param, INT_MIN, INT_MAX);
                if (word == "bin" && hasParam) {
                    binaryData(qsizetype(std::max<qint64>(param, 0)));
                    continue;
                }
                controlWord(word, hasParam, int(param));
            } else if (next == '\'') {
                ++m_pos;
                bool ok = false;
                const uint value = m_pos + 2 <= n ? m_data.mid(m_pos, 2).toUInt(&ok, 16) : 0;
                if (ok) {
                    m_pos += 2;
                    hexByte(uchar(value));
                }
            } else {
                ++m_pos;
                controlSymbol(next);
            }
        } else {
            textByte(c);
        }
    }
    flushRun();
    m_cursor.setBlockFormat(blockFormat());
}

void Parser::groupOpen()
{
    m_skipChars = 0;
    flushRun();
    if (m_overflowDepth > 0 || m_stack.size() >= m_limits.maxDepth) {
        ++m_overflowDepth;
        return;
    }
    m_stack.push_back(m_state);
    m_starPending = false;
}

void Parser::groupClose()
{
    m_skipChars = 0;
    m_starPending = false;
    if (m_overflowDepth > 0) {
        --m_overflowDepth;
        return;
    }
    flushRun();
    if (m_stack.isEmpty())
        return; // an unbalanced closing brace: ignore it
    const Destination leaving = m_state.dest;
    if (leaving == Destination::FontTable)
        finishFontEntry();
    m_state = m_stack.takeLast();
    if (leaving == Destination::Picture && m_state.dest != Destination::Picture)
        finishPicture();
}

bool Parser::consumeSkippedFallback()
{
    if (m_skipChars <= 0)
        return false;
    --m_skipChars;
    return true;
}

void Parser::controlWord(const QByteArray &word, bool hasParam, int param)
{
    if (m_overflowDepth > 0)
        return;
    const bool starred = m_starPending;
    m_starPending = false;
    if (m_state.dest == Destination::Skip)
        return;
    if (consumeSkippedFallback())
        return;

    if (starred && !isKnownStarredDestination(word)) {
        flushRun();
        m_state.dest = Destination::Skip;
        return;
    }

    // Destinations and the tables.
    if (m_state.dest == Destination::FontTable) {
        if (word == "f") {
            finishFontEntry();
            m_fontNumber = param;
            m_fontEntry = FontEntry{};
        } else if (word == "fcharset") {
            m_fontEntry.charset = param;
        } else if (skippedDestinations().contains(word)) {
            m_state.dest = Destination::Skip;
        }
        return;
    }
    if (m_state.dest == Destination::ColorTable) {
        if (word == "red")
            m_red = param;
        else if (word == "green")
            m_green = param;
        else if (word == "blue")
            m_blue = param;
        return;
    }
    if (m_state.dest == Destination::Picture) {
        if (word == "pngblip")
            m_pictureType = PictureType::Png;
        else if (word == "jpegblip")
            m_pictureType = PictureType::Jpeg;
        else if (word == "wmetafile" || word == "emfblip" || word == "macpict" || word == "dibitmap"
                 || word == "wbitmap" || word == "pmmetafile")
            m_pictureType = PictureType::Other;
        else if (word == "picw")
            m_picW = param;
        else if (word == "pich")
            m_picH = param;
        else if (word == "picwgoal")
            m_picWGoal = param;
        else if (word == "pichgoal")
            m_picHGoal = param;
        else if (word == "picscalex")
            m_scaleX = param;
        else if (word == "picscaley")
            m_scaleY = param;
        return;
    }

    flushRun();
    if (word == "fonttbl") {
        m_state.dest = Destination::FontTable;
        m_fontNumber = -1;
        m_fontName.clear();
    } else if (word == "colortbl") {
        m_state.dest = Destination::ColorTable;
        m_red = m_green = m_blue = -1;
    } else if (word == "pict") {
        m_state.dest = Destination::Picture;
        m_pictureType = PictureType::None;
        m_pictureHex.clear();
        m_pictureBinary.clear();
        m_picW = m_picH = m_picWGoal = m_picHGoal = 0;
        m_scaleX = m_scaleY = 100;
    } else if (skippedDestinations().contains(word)) {
        m_state.dest = Destination::Skip;
    } else if (word == "ansicpg") {
        if (hasParam && param > 0)
            m_documentCodepage = param;
    } else if (word == "mac") {
        m_documentCodepage = 10000;
    } else if (word == "pc") {
        m_documentCodepage = 437;
    } else if (word == "pca") {
        m_documentCodepage = 850;
    } else if (word == "deff") {
        m_defaultFont = param;
        if (m_state.font < 0)
            m_state.font = param;
    } else if (word == "uc") {
        m_state.unicodeSkip = std::clamp(param, 0, 16);
    } else if (word == "u") {
        flushBytes();
        const char16_t unit = char16_t(param < 0 ? param + 65536 : param);
        m_run += QChar(unit);
        m_lastWasCell = false;
        m_skipChars = m_state.unicodeSkip;
    } else if (word == "par" || word == "sect" || word == "page") {
        paragraph();
    } else if (word == "row") {
        if (m_lastWasCell)
            m_cursor.deletePreviousChar();
        m_lastWasCell = false;
        paragraph();
    } else if (word == "cell" || word == "nestcell") {
        appendChar(u'\t');
        flushRun();
        m_lastWasCell = true;
    } else if (const char16_t special = specialCharacter(word)) {
        appendChar(special);
    } else if (word == "pard") {
        m_state.resetParagraph();
    } else if (word == "plain") {
        m_state.resetCharacter(m_defaultFont);
    } else if (word == "b") {
        m_state.bold = !hasParam || param != 0;
    } else if (word == "i") {
        m_state.italic = !hasParam || param != 0;
    } else if (word == "ul" || word == "uld" || word == "uldb" || word == "ulw" || word == "uldash"
               || word == "ulth" || word == "ulwave") {
        m_state.underline = !hasParam || param != 0;
    } else if (word == "ulnone") {
        m_state.underline = false;
    } else if (word == "strike" || word == "striked") {
        m_state.strike = !hasParam || param != 0;
    } else if (word == "v") {
        m_state.hidden = !hasParam || param != 0;
    } else if (word == "caps") {
        m_state.capitals = (!hasParam || param != 0) ? 1 : 0;
    } else if (word == "scaps") {
        m_state.capitals = (!hasParam || param != 0) ? 2 : 0;
    } else if (word == "super") {
        m_state.verticalAlign = 1;
    } else if (word == "sub") {
        m_state.verticalAlign = 2;
    } else if (word == "nosupersub") {
        m_state.verticalAlign = 0;
    } else if (word == "fs") {
        m_state.fontSize = hasParam && param > 0 ? std::min(param, 3276) : 24;
    } else if (word == "f") {
        m_state.font = param;
    } else if (word == "cf") {
        m_state.foreground = param;
    } else if (word == "cb" || word == "highlight" || word == "chcbpat") {
        m_state.background = param;
    } else if (word == "ql") {
        m_state.alignment = Qt::AlignLeft;
    } else if (word == "qc") {
        m_state.alignment = Qt::AlignHCenter;
    } else if (word == "qr") {
        m_state.alignment = Qt::AlignRight;
    } else if (word == "qj") {
        m_state.alignment = Qt::AlignJustify;
    } else if (word == "li") {
        m_state.leftIndent = param;
    } else if (word == "ri") {
        m_state.rightIndent = param;
    } else if (word == "fi") {
        m_state.firstIndent = param;
    } else if (word == "sb") {
        m_state.spaceBefore = param;
    } else if (word == "sa") {
        m_state.spaceAfter = param;
    }
    // Every other control word changes nothing that the text box shows.
}

void Parser::controlSymbol(char c)
{
    if (m_overflowDepth > 0)
        return;
    if (c == '*') {
        m_starPending = true;
        return;
    }
    if (m_state.dest == Destination::Skip || m_state.dest == Destination::Picture
        || m_state.dest == Destination::ColorTable)
        return;
    if (consumeSkippedFallback())
        return;
    if (m_state.dest == Destination::FontTable) {
        if (c == '\\' || c == '{' || c == '}')
            m_fontName += c;
        return;
    }
    switch (c) {
    case '\\':
    case '{':
    case '}':
        m_bytes += c;
        break;
    case '~':
        appendChar(0x00A0);
        break;
    case '-':
        appendChar(0x00AD);
        break;
    case '_':
        appendChar(0x2011);
        break;
    case '\n':
    case '\r':
        flushRun();
        paragraph();
        break;
    default:
        break;
    }
}

void Parser::textByte(char c)
{
    if (m_overflowDepth > 0)
        return;
    m_starPending = false;
    if (c == '\r' || c == '\n')
        return;
    switch (m_state.dest) {
    case Destination::Skip:
        return;
    case Destination::FontTable:
        if (c == ';')
            finishFontEntry();
        else
            m_fontName += c;
        return;
    case Destination::ColorTable:
        if (c == ';') {
            m_colors << ((m_red < 0 && m_green < 0 && m_blue < 0)
                             ? QColor()
                             : QColor(std::clamp(m_red, 0, 255), std::clamp(m_green, 0, 255), std::clamp(m_blue, 0, 255)));
            m_red = m_green = m_blue = -1;
        }
        return;
    case Destination::Picture:
        if (m_pictureHex.size() < m_limits.maxPictureBytes * 2 && std::isxdigit(uchar(c)))
            m_pictureHex += c;
        return;
    case Destination::Normal:
        break;
    }
    if (consumeSkippedFallback())
        return;
    if (m_bytes.isEmpty() && m_run.isEmpty())
        m_lastWasCell = false;
    m_bytes += c;
}

void Parser::hexByte(uchar b)
{
    if (m_overflowDepth > 0)
        return;
    m_starPending = false;
    if (m_state.dest == Destination::FontTable) {
        m_fontName += char(b);
        return;
    }
    if (m_state.dest != Destination::Normal)
        return;
    if (consumeSkippedFallback())
        return;
    m_lastWasCell = false;
    m_bytes += char(b);
}

void Parser::binaryData(qsizetype length)
{
    length = std::min(length, m_data.size() - m_pos);
    if (m_overflowDepth == 0 && m_state.dest == Destination::Picture
        && m_pictureBinary.size() + length <= m_limits.maxPictureBytes)
        m_pictureBinary += m_data.mid(m_pos, length);
    m_pos += length;
}

void Parser::appendChar(char16_t c)
{
    flushBytes();
    m_run += QChar(c);
    m_lastWasCell = false;
}

void Parser::flushBytes()
{
    if (m_bytes.isEmpty())
        return;
    m_run += decode(m_bytes, currentCodepage());
    m_bytes.clear();
}

void Parser::flushRun()
{
    flushBytes();
    if (m_run.isEmpty())
        return;
    if (!m_state.hidden && m_state.dest == Destination::Normal)
        m_cursor.insertText(m_run, charFormat());
    m_run.clear();
}

void Parser::paragraph()
{
    flushRun();
    m_cursor.setBlockFormat(blockFormat());
    m_cursor.insertBlock(blockFormat(), charFormat());
    m_lastWasCell = false;
}

void Parser::finishFontEntry()
{
    if (m_fontNumber < 0) {
        m_fontName.clear();
        return;
    }
    QByteArray name = m_fontName.trimmed();
    if (name.endsWith(';'))
        name.chop(1);
    if (!name.isEmpty() || !m_fonts.contains(m_fontNumber)) {
        const int cp = codepageOfCharset(m_fontEntry.charset, m_documentCodepage);
        m_fontEntry.name = decode(name, cp).trimmed();
        m_fonts.insert(m_fontNumber, m_fontEntry);
    }
    m_fontName.clear();
    m_fontNumber = -1;
}

void Parser::finishPicture()
{
    if (m_pictureType != PictureType::Png && m_pictureType != PictureType::Jpeg)
        return;
    const QByteArray data = m_pictureBinary.isEmpty() ? QByteArray::fromHex(m_pictureHex) : m_pictureBinary;
    m_pictureHex.clear();
    m_pictureBinary.clear();
    QImage image;
    if (!image.loadFromData(data, m_pictureType == PictureType::Png ? "PNG" : "JPG"))
        return;
    const QString name = QStringLiteral("rtf-picture-%1").arg(++m_pictureCount);
    m_doc->addResource(QTextDocument::ImageResource, QUrl(name), image);
    QTextImageFormat format;
    format.setName(name);
    const double width = m_picWGoal > 0 ? m_picWGoal * m_scaleX / 100.0 / TwipsPerPixel : image.width();
    const double height = m_picHGoal > 0 ? m_picHGoal * m_scaleY / 100.0 / TwipsPerPixel : image.height();
    format.setWidth(width);
    format.setHeight(height);
    m_cursor.insertImage(format);
}

int Parser::currentCodepage() const
{
    const int font = m_state.font >= 0 ? m_state.font : m_defaultFont;
    const auto it = m_fonts.constFind(font);
    if (it == m_fonts.constEnd())
        return m_documentCodepage;
    return codepageOfCharset(it->charset, m_documentCodepage);
}

QString Parser::decode(const QByteArray &bytes, int codepage)
{
    if (codepage != 1252) {
        auto it = m_decoders.find(codepage);
        if (it == m_decoders.end()) {
            const QByteArray name = codecName(codepage);
            auto decoder = std::make_unique<QStringDecoder>(name.isEmpty() ? "invalid-codec" : name.constData(),
                                                            QStringDecoder::Flag::Stateless);
            it = m_decoders.emplace(codepage, std::move(decoder)).first;
        }
        if (it->second->isValid())
            return it->second->decode(bytes);
    }
    return decodeText(bytes, TextEncoding::Windows1252);
}

QTextCharFormat Parser::charFormat() const
{
    QTextCharFormat f;
    const int font = m_state.font >= 0 ? m_state.font : m_defaultFont;
    const auto it = m_fonts.constFind(font);
    if (it != m_fonts.constEnd() && !it->name.isEmpty())
        f.setFontFamilies(QStringList{it->name});
    f.setFontPointSize(m_state.fontSize / 2.0);
    f.setFontWeight(m_state.bold ? QFont::Bold : QFont::Normal);
    f.setFontItalic(m_state.italic);
    f.setFontUnderline(m_state.underline);
    f.setFontStrikeOut(m_state.strike);
    if (m_state.capitals == 1)
        f.setFontCapitalization(QFont::AllUppercase);
    else if (m_state.capitals == 2)
        f.setFontCapitalization(QFont::SmallCaps);
    if (m_state.verticalAlign == 1)
        f.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    else if (m_state.verticalAlign == 2)
        f.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    if (m_state.foreground > 0 && m_state.foreground < m_colors.size() && m_colors.at(m_state.foreground).isValid())
        f.setForeground(m_colors.at(m_state.foreground));
    if (m_state.background > 0 && m_state.background < m_colors.size() && m_colors.at(m_state.background).isValid())
        f.setBackground(m_colors.at(m_state.background));
    return f;
}

QTextBlockFormat Parser::blockFormat() const
{
    QTextBlockFormat f;
    f.setAlignment(m_state.alignment);
    f.setLeftMargin(m_state.leftIndent / TwipsPerPixel);
    f.setRightMargin(m_state.rightIndent / TwipsPerPixel);
    f.setTextIndent(m_state.firstIndent / TwipsPerPixel);
    f.setTopMargin(m_state.spaceBefore / TwipsPerPixel);
    f.setBottomMargin(m_state.spaceAfter / TwipsPerPixel);
    return f;
}

} // namespace

bool RtfReader::read(const QByteArray &data, QTextDocument *document, QString *errorString, const RtfLimits &limits)
{
    document->clear();
    if (data.size() > limits.maxInputBytes) {
        if (errorString)
            *errorString = QStringLiteral("The document is too large to show.");
        return false;
    }
    // Leading white space is tolerated; anything else must open with "{\rtf".
    const QByteArray head = data.left(64).trimmed();
    if (!head.startsWith("{\\rtf")) {
        if (errorString)
            *errorString = QStringLiteral("The file is not a Rich Text Format document.");
        return false;
    }
    Parser parser(data, document, limits);
    parser.run();
    return true;
}

QString RtfReader::plainText(const QByteArray &data)
{
    QTextDocument document;
    read(data, &document);
    return document.toPlainText();
}

} // namespace tarnby::viewer
