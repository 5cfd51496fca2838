#pragma once

#include "ui/viewer/DocumentView.h"

class QLabel;

namespace tarnby::ui {

// The view of a database or spreadsheet window. Until the table view
// arrives it shows the file's path and a notice that tables cannot be shown
// yet; copying says that it is not available.
class TableDocumentView : public DocumentView
{
    Q_OBJECT
public:
    TableDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                      QWidget *parent = nullptr);

    void showDocument() override;
    void copySelection() override;
    // FIXME: the table view lets go of its table here once it exists.
    void releaseFile(const QString &closeTextPath) override { Q_UNUSED(closeTextPath) }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QLabel *m_notice = nullptr;
};

} // namespace tarnby::ui
