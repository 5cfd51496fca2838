#pragma once

#include <QFile>
#include <QString>

#include <vmime/header.hpp>
#include <vmime/utility/outputStream.hpp>

#include <memory>
#include <vector>

// A received message in a file, taken apart without reading its parts into
// memory. vmime's own parser hands every part's header parser the whole rest
// of the part as one string, so a large attachment was copied into memory
// several times over; here only the headers are read (and parsed by vmime),
// and each part's body is known by its place in the file and decoded from
// there in blocks. Used by the mail transport only.
namespace tarnby::mailnet {

struct MessageLeaf {
    std::shared_ptr<vmime::header> header;
    qint64 bodyStart = 0; // the encoded body, in the file
    qint64 bodyEnd = 0;
    bool attachment = false;
    bool plainText = false; // text/plain that is not an attachment
    QString name;           // the attachment's name as sent (may be empty)
};

struct MessageFile {
    std::shared_ptr<vmime::header> header;
    std::vector<MessageLeaf> leaves; // the parts that are not multipart, in order
};

// Reads the structure of the message in file. Throws vmime::exception for a
// message that is malformed beyond use (a header block over 1 MB, parts
// nested too deep or too many).
MessageFile scanMessage(QFile &file);

// Decodes a part's body (base64, quoted-printable or as it is) into out, a
// block at a time.
void decodeLeaf(QFile &file, const MessageLeaf &leaf, vmime::utility::outputStream &out);

} // namespace tarnby::mailnet
