#pragma once

#include <QString>
#include <QStringList>

// The e-mail address lists (".MLS" files): one entry a line, the name, " - "
// and the address, CR LF line ends, no header and no blank lines. The default
// list is "MailAddr.MLS" in the program folder.
namespace tarnby::mail {

inline const QString DefaultAddressListName = QStringLiteral("MailAddr.MLS");

struct AddressEntry {
    QString name;
    QString address;
    bool operator==(const AddressEntry &) const = default;
};

// The line of an entry: name + " - " + address.
QString addressLine(const QString &name, const QString &address);

// Splits a line at its first hyphen: the name is what stands before it less
// the one character before it (the blank), the address what stands after it
// less the one character after it. A name with a hyphen of its own therefore
// splits inside the name ("Jean-Luc - a@b" gives "Jea" and "uc - a@b"); that
// is the file's rule and lists written by older versions depend on it. A line
// without a hyphen is all name.
AddressEntry splitAddressLine(const QString &line);

struct AddressListRead {
    bool found = false;
    QStringList lines;
    // Why reading stopped early (a line that is not text, a line or file too
    // long); the lines before it are kept. Empty when it read to the end.
    QString stoppedBecause;
};

// Reads the whole list. Accepts LF or CR LF; blank lines are skipped.
AddressListRead readAddressList(const QString &path);

// Writes every line, first to last, each ended by CR LF, replacing the file
// atomically. An empty list makes an empty file.
bool writeAddressList(const QString &path, const QStringList &lines, QString *error);

// The recipients of the sending window's address box: split at CR with the
// LF after it dropped, empty lines skipped, order kept.
QStringList recipientsFromText(const QString &text);

// The contacts of a vCard file (.vcf), as every mail program and address book
// exports them: each card's formatted name (FN, else N) and first e-mail
// address, in file order. Cards without an address are left out. Folded
// lines are joined; quoted-printable and other encodings are not decoded.
// At most 16 MB of the file is read.
QList<AddressEntry> readVCardContacts(const QString &path);

} // namespace tarnby::mail
