#pragma once

#include "core/printing/PrintTypes.h"

#include <QString>

class QPagedPaintDevice;
class QTextDocument;

// The text job: text, rich-text and web documents.
//
// Text and rich text get the page header on a page of their own first, then
// the document; a web page is printed as the web view prints it, with no
// header. A plain text file is read and laid out a page of the file (about a
// megabyte) at a time, so a file of any size costs a bounded amount of memory;
// each of those parts starts on a new sheet.
namespace tarnby::printing {

// Prints the file at path as the text tab does. useTextDoc is the option that
// shows web and word-processor documents as plain text.
PrintResult printTextFile(QPagedPaintDevice &device, const QString &path, bool useTextDoc,
                          const PrintFont &font, JobControl *control = nullptr);

} // namespace tarnby::printing
