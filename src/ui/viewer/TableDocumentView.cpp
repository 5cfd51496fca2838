#include "ui/viewer/TableDocumentView.h"

#include "core/viewer/Document.h"

#include <QDir>
#include <QLabel>

namespace tarnby::ui {

TableDocumentView::TableDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                                     QWidget *parent)
    : DocumentView(document, services, host, parent)
{
    m_notice = new QLabel(this);
    m_notice->setObjectName(QStringLiteral("TableNotice"));
    m_notice->setWordWrap(true);
    m_notice->setAlignment(Qt::AlignCenter);
    m_notice->hide();
}

void TableDocumentView::showDocument()
{
    m_notice->setText(QStringLiteral("%1\n\nDatabase and spreadsheet tables cannot be shown in this "
                                     "version of Tarnby yet.")
                          .arg(QDir::toNativeSeparators(document().path())));
    m_notice->show();
}

void TableDocumentView::copySelection()
{
    notYetAvailable(QStringLiteral("Copying from a database table"));
}

void TableDocumentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_notice->setGeometry(rect());
}

} // namespace tarnby::ui
