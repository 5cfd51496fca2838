#include "ui/tools/HelpWindow.h"

#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {
struct Topic {
    QString fileName;
    QString title;
    QString text;
};

// Help pages are small; a topic's title is its <title>.
QList<Topic> readTopics(const QString &folder)
{
    QList<Topic> topics;
    const QStringList pages = QDir(folder).entryList({QStringLiteral("*.html"), QStringLiteral("*.htm")}, QDir::Files, QDir::Name);
    for (const QString &page : pages) {
        QFile f(QDir(folder).filePath(page));
        if (!f.open(QIODevice::ReadOnly) || f.size() > 4 * 1024 * 1024)
            continue;
        const QString html = QString::fromUtf8(f.readAll());
        QTextDocument doc;
        doc.setHtml(html);
        const QRegularExpressionMatch m =
            QRegularExpression(QStringLiteral("<title>(.*?)</title>"), QRegularExpression::CaseInsensitiveOption).match(html);
        topics.append({page, m.hasMatch() ? m.captured(1).trimmed() : page, doc.toPlainText()});
    }
    return topics;
}
} // namespace

HelpWindow::HelpWindow(const QString &helpFolder, QWidget *parent)
    : QWidget(parent)
    , m_folder(helpFolder)
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(QStringLiteral("Tarnby Help"));
    auto *layout = new QVBoxLayout(this);
    auto *searchRow = new QHBoxLayout;
    searchRow->addWidget(new QLabel(QStringLiteral("Search:"), this));
    m_searchField = new QLineEdit(this);
    m_searchField->setObjectName(QStringLiteral("SearchField"));
    m_searchField->setClearButtonEnabled(true);
    searchRow->addWidget(m_searchField, 1);
    layout->addLayout(searchRow);

    auto *splitter = new QSplitter(this);
    m_topics = new QListWidget(splitter);
    m_topics->setObjectName(QStringLiteral("Topics"));
    m_page = new QTextBrowser(splitter);
    m_page->setObjectName(QStringLiteral("Page"));
    m_page->setOpenExternalLinks(false);
    m_page->setSearchPaths({m_folder});
    splitter->setStretchFactor(1, 3);
    layout->addWidget(splitter, 1);

    connect(m_searchField, &QLineEdit::textChanged, this, [this](const QString &q) { search(q); });
    connect(m_topics, &QListWidget::currentItemChanged, this, [this](QListWidgetItem *item) {
        if (item)
            openPage(item->data(Qt::UserRole).toString());
    });
    resize(760, 520);
    search(QString());
}

int HelpWindow::search(const QString &query)
{
    const QSignalBlocker blocker(m_topics);
    m_topics->clear();
    for (const Topic &t : readTopics(m_folder)) {
        if (!query.isEmpty() && !t.text.contains(query, Qt::CaseInsensitive) && !t.title.contains(query, Qt::CaseInsensitive))
            continue;
        auto *item = new QListWidgetItem(t.title, m_topics);
        item->setData(Qt::UserRole, t.fileName);
    }
    return m_topics->count();
}

void HelpWindow::openPage(const QString &fileName)
{
    const QString path = QDir(m_folder).filePath(fileName);
    if (!QFile::exists(path)) {
        m_page->setPlainText(QStringLiteral("The help page %1 was not found in %2.").arg(fileName, m_folder));
        return;
    }
    m_page->setSource(QUrl::fromLocalFile(path));
}

void HelpWindow::showContents()
{
    m_searchField->clear();
    openPage(QStringLiteral("index.html"));
}

void showHelpContents(const QString &helpFolder, QWidget *parent)
{
    auto *help = new HelpWindow(helpFolder, parent);
    help->setWindowFlag(Qt::Window);
    help->setAttribute(Qt::WA_DeleteOnClose);
    help->showContents();
    help->show();
}

void HelpWindow::showTopic(const QString &fileName)
{
    openPage(fileName);
}

void HelpWindow::showSearch()
{
    m_searchField->setFocus();
    m_searchField->selectAll();
}

QString HelpWindow::currentPage() const
{
    return m_page->source().fileName();
}

} // namespace tarnby::ui
