#pragma once

#include "core/tables/IndexOrder.h"
#include "ui/viewer/DocumentView.h"

#include <QFutureWatcher>

#include <array>
#include <atomic>
#include <memory>

class QFrame;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QProgressBar;
class QTableView;
class QTextEdit;
class QToolButton;

namespace tarnby {
class AppState;
}

namespace tarnby::tables {
class TableFile;
class TableModel;
} // namespace tarnby::tables

namespace tarnby::ui {

// The view of a database or spreadsheet window: one table of the file in the
// grid MSFlexGrid1 (rows fetched from the table as they come into sight),
// the record bar Data1 that moves through it, the table and index lists in
// Frame1 (List1, List2, ExitDBaseBtn) and the memo box Frame2 with Text2.
//
// Showing the table fills the program-wide table list and structure values.
// The file and its first table are opened on a worker thread (a network
// folder may take a while): meanwhile the record bar says so and the window
// stays responsive; closing it then leaves the worker to finish alone. A
// file that needs a password offers the Login window; the
// password then lives in the program's state for the run. Choosing an index
// orders the rows by its key: the order is made on a worker thread from a
// copy of the table of its own, with progress, and a new choice (or the
// window closing) drops a running one.
class TableDocumentView : public DocumentView
{
    Q_OBJECT
public:
    TableDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host, AppState &state,
                      QWidget *parent = nullptr);
    ~TableDocumentView() override;

    void showDocument() override;
    void activate() override;
    void closing() override;
    qint16 indexCount() const override;
    tables::FileProperties fileProperties() const override;

    void copySelection() override;
    void releaseFile(const QString &closeTextPath) override;
    void chooseTable() override;   // mnuViewTable_Click
    void chooseIndex() override;   // mnuViewIndex_Click
    void showComments() override;  // mnuViewComments_Click

    // The data control's properties.
    QString connectText() const { return m_connect; }
    QString databaseName() const { return m_databaseName; }
    QString recordSource() const { return m_recordSource; }
    // The field type of grid column c (the initial value 0 where no field is).
    int columnType(int column) const;
    tables::TableModel *model() const { return m_model; }
    // The index the rows are ordered by; empty for the table's own order.
    QString currentIndex() const { return m_orderedBy; }
    bool isOrdering() const { return m_orderWatcher.isRunning(); }
    bool isOpening() const { return m_opening; }

    // Clicks on the lists, as the user makes them.
    void List1_Click(const QString &tableName);
    void List2_Click(const QString &indexName);
    void ExitDBaseBtn_Click();

signals:
    // The file has been opened and its first table shown, or it failed.
    void opened();
    // An index's order has been applied to the grid (or failed: the rows
    // stay as they were).
    void indexApplied(const QString &indexName);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void showTable();
    struct Opening;
    void startOpening();
    void openingFinished();
    void finishShowTable();
    void showOpenedTable(tables::Result<std::unique_ptr<tables::Table>> opened);
    void openTable(const QString &name);
    void layoutGrid();
    void setColumnWidths();
    void fillLists();
    void enableCommands();
    void layoutFrames();
    void updateFrame1();
    void cancelOrdering();
    void orderingFinished();
    void currentCellChanged();
    void moveRecord(int to);

    AppState &m_state;
    QString m_extension;
    QString m_folder;
    QString m_fileName;
    QString m_connect;
    QString m_databaseName;
    QString m_recordSource;
    std::array<int, 301> m_columnTypes{};
    int m_tableCount = 0;
    // Whether the table list may be used to switch tables.
    bool m_switchable = false;
    bool m_tableListShown = false;
    bool m_indexListShown = false;
    bool m_commentsShown = false;

    std::unique_ptr<tables::TableFile> m_file;
    tables::TableModel *m_model = nullptr;
    QStringList m_indexNames;
    QString m_orderedBy;
    QString m_orderingIndex;
    std::shared_ptr<std::atomic_bool> m_orderCancel;
    QFutureWatcher<tables::Result<tables::RowOrder>> m_orderWatcher;
    QFutureWatcher<std::shared_ptr<Opening>> m_openWatcher;
    bool m_opening = false;
    bool m_loginAsked = false;
    bool m_oneTableFile = false;

    QFrame *m_data1 = nullptr;
    QLabel *m_data1Caption = nullptr;
    QTableView *m_grid = nullptr;
    QFrame *m_frame1 = nullptr;
    QListWidget *m_list1 = nullptr;
    QListWidget *m_list2 = nullptr;
    QToolButton *m_exitButton = nullptr;
    QProgressBar *m_orderProgress = nullptr;
    QToolButton *m_orderCancelButton = nullptr;
    QFrame *m_frame2 = nullptr;
    QTextEdit *m_text2 = nullptr;
};

} // namespace tarnby::ui
