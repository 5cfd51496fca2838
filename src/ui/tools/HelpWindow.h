#pragma once

#include <QWidget>

class QLineEdit;
class QListWidget;
class QTextBrowser;

namespace tarnby::ui {

// The help window: the HTML pages of the program folder's Help folder, with a
// list of topics, a search over their text and the page itself. Pages are
// read from disk only; nothing is fetched from a network.
class HelpWindow : public QWidget
{
    Q_OBJECT
public:
    explicit HelpWindow(const QString &helpFolder, QWidget *parent = nullptr);

    void showContents();
    void showSearch();
    // Opens one page of the Help folder ("search.html").
    void showTopic(const QString &fileName);
    // Lists the topics whose text holds query (case-insensitive); all topics
    // for an empty query. Returns the number listed.
    int search(const QString &query);
    QString currentPage() const;

private:
    void openPage(const QString &fileName);

    QString m_folder;
    QLineEdit *m_searchField = nullptr;
    QListWidget *m_topics = nullptr;
    QTextBrowser *m_page = nullptr;
};

// Opens a help window of its own at the contents of helpFolder, for the Help
// buttons of the dialogs. The window stays above parent and deletes itself
// when it is closed.
void showHelpContents(const QString &helpFolder, QWidget *parent);

} // namespace tarnby::ui
