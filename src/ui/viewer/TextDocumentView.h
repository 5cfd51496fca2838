#pragma once

#include "ui/viewer/DocumentView.h"

class QLabel;
class QPushButton;
class QTextEdit;

namespace tarnby::ui {

// The view of a text window that shows its document in the text box: rich
// text (RTF) in the document's own fonts, or plain text in Arial a page at a
// time, with a page bar when the file has more than one page. The window goes
// to the frame's top left corner at the fixed text window size.
class TextDocumentView : public DocumentView
{
    Q_OBJECT
public:
    TextDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                     QWidget *parent = nullptr);
    ~TextDocumentView() override;

    QTextEdit *textBox() const { return m_text; }

    void start() override;
    void showDocument() override;
    void copySelection() override;
    // An HTML file shown as text is replaced by the small text file kept for
    // this.
    void releaseFile(const QString &closeTextPath) override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showTextPage();
    void layoutControls();

    QTextEdit *m_text = nullptr;
    QWidget *m_pageBar = nullptr;
    QLabel *m_pageLabel = nullptr;
    QPushButton *m_prevPage = nullptr;
    QPushButton *m_nextPage = nullptr;
};

} // namespace tarnby::ui
