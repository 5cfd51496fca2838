#pragma once

#include <QString>

// The outside converters for documents that the web view shows: Works word
// processor files through libwps, Word files through antiword. Synchronous and
// reentrant; call them on a worker thread.
namespace tarnby::viewer {

struct ConvertedDocument {
    QString html;       // set for Works documents
    QString plainText;  // set for Word documents
    QString errorString;
    bool ok() const { return errorString.isEmpty(); }
};

// A Works word processor document as HTML.
ConvertedDocument convertWorksDocument(const QString &path);

// A Word document's text, through the antiword program. timeoutMs bounds the
// wait for the converter.
ConvertedDocument convertWordDocument(const QString &path, int timeoutMs = 30000);

} // namespace tarnby::viewer
