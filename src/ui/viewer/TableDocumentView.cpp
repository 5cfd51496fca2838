#include "ui/viewer/TableDocumentView.h"

#include "core/app/AppState.h"
#include "core/app/Twips.h"
#include "core/catalogue/CommandKeys.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/tables/DatabaseValues.h"
#include "core/tables/TableModel.h"
#include "core/viewer/Document.h"
#include "ui/services/UiServices.h"
#include "ui/tables/Login.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QTableView>
#include <QTextEdit>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtConcurrent>

namespace tarnby::ui {

namespace keys = commands::keys;
using tables::OpenStatus;

namespace {

// The window's place and size when the table is shown, in twips from the
// frame's client corner.
constexpr int WindowLeftTwips = 200, WindowTopTwips = 250;
constexpr int WindowWidthTwips = 6300, WindowHeightTwips = 5000;
// The grid's margins to the window's outer size.
constexpr int GridLeftTwips = 5, GridTopTwips = 310;
constexpr int GridWidthMarginTwips = 90, GridHeightMarginTwips = 730;

QToolButton *recordButton(QWidget *parent, const char *name, Qt::ArrowType arrow, const QString &tip)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setArrowType(arrow);
    button->setToolTip(tip);
    button->setAutoRaise(true);
    return button;
}

} // namespace

TableDocumentView::TableDocumentView(viewer::Document &document, UiServices &services, DocumentViewHost &host,
                                     AppState &state, QWidget *parent)
    : DocumentView(document, services, host, parent)
    , m_state(state)
    , m_extension(catalogue::GetFileExt(document.path()))
{
    // Data1: the record bar, with the table's name between its buttons.
    m_data1 = new QFrame(this);
    m_data1->setObjectName(QStringLiteral("Data1"));
    m_data1->setFrameShape(QFrame::Panel);
    m_data1->setFrameShadow(QFrame::Sunken);
    auto *bar = new QHBoxLayout(m_data1);
    bar->setContentsMargins(1, 1, 1, 1);
    bar->setSpacing(0);
    auto *first = recordButton(m_data1, "Data1First", Qt::UpArrow, QStringLiteral("First Record"));
    auto *previous = recordButton(m_data1, "Data1Previous", Qt::LeftArrow, QStringLiteral("Previous Record"));
    auto *next = recordButton(m_data1, "Data1Next", Qt::RightArrow, QStringLiteral("Next Record"));
    auto *last = recordButton(m_data1, "Data1Last", Qt::DownArrow, QStringLiteral("Last Record"));
    m_data1Caption = new QLabel(m_data1);
    m_data1Caption->setObjectName(QStringLiteral("Data1Caption"));
    m_data1Caption->setAlignment(Qt::AlignCenter);
    bar->addWidget(first);
    bar->addWidget(previous);
    bar->addWidget(m_data1Caption, 1);
    bar->addWidget(next);
    bar->addWidget(last);
    connect(first, &QToolButton::clicked, this, [this] { moveRecord(0); });
    connect(previous, &QToolButton::clicked, this, [this] {
        moveRecord(qMax(0, m_grid->currentIndex().row() - 1));
    });
    connect(next, &QToolButton::clicked, this, [this] { moveRecord(m_grid->currentIndex().row() + 1); });
    connect(last, &QToolButton::clicked, this, [this] { moveRecord(std::numeric_limits<int>::max()); });

    m_grid = new QTableView(this);
    m_grid->setObjectName(QStringLiteral("MSFlexGrid1"));
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectItems);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setWordWrap(false);
    m_grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    // Column widths come from the fields; a narrow field keeps its narrow column.
    m_grid->horizontalHeader()->setMinimumSectionSize(4);
    m_grid->hide();

    // Frame1: the table list, the index list and the button that closes both.
    m_frame1 = new QFrame(this);
    m_frame1->setObjectName(QStringLiteral("Frame1"));
    m_frame1->setFrameShape(QFrame::Panel);
    m_frame1->setFrameShadow(QFrame::Raised);
    m_frame1->setAutoFillBackground(true);
    m_list1 = new QListWidget(m_frame1);
    m_list1->setObjectName(QStringLiteral("List1"));
    m_list2 = new QListWidget(m_frame1);
    m_list2->setObjectName(QStringLiteral("List2"));
    m_exitButton = new QToolButton(m_frame1);
    m_exitButton->setObjectName(QStringLiteral("ExitDBaseBtn"));
    m_exitButton->setText(QStringLiteral("Close"));
    m_exitButton->setToolTip(QStringLiteral("Close Database Table and Index Display"));
    m_orderProgress = new QProgressBar(m_frame1);
    m_orderProgress->setObjectName(QStringLiteral("IndexProgress"));
    m_orderProgress->setTextVisible(false);
    m_orderProgress->hide();
    m_orderCancelButton = new QToolButton(m_frame1);
    m_orderCancelButton->setObjectName(QStringLiteral("IndexCancelBtn"));
    m_orderCancelButton->setText(QStringLiteral("Stop"));
    m_orderCancelButton->setToolTip(QStringLiteral("Stop Ordering the Table by the Index"));
    m_orderCancelButton->hide();
    auto *frameLayout = new QVBoxLayout(m_frame1);
    frameLayout->setContentsMargins(3, 3, 3, 3);
    frameLayout->addWidget(m_list1, 1);
    frameLayout->addWidget(m_list2, 1);
    auto *progressRow = new QHBoxLayout;
    progressRow->addWidget(m_orderProgress, 1);
    progressRow->addWidget(m_orderCancelButton);
    frameLayout->addLayout(progressRow);
    frameLayout->addWidget(m_exitButton, 0, Qt::AlignRight);
    m_frame1->hide();
    connect(m_list1, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) { List1_Click(item->text()); });
    connect(m_list2, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) { List2_Click(item->text()); });
    connect(m_exitButton, &QToolButton::clicked, this, &TableDocumentView::ExitDBaseBtn_Click);
    connect(m_orderCancelButton, &QToolButton::clicked, this, [this] {
        cancelOrdering();
        emit indexApplied(QString());
    });

    // Frame2: the text of the memo in the current cell.
    m_frame2 = new QFrame(this);
    m_frame2->setObjectName(QStringLiteral("Frame2"));
    m_frame2->setFrameShape(QFrame::Panel);
    m_frame2->setFrameShadow(QFrame::Raised);
    m_frame2->setAutoFillBackground(true);
    m_frame2->setToolTip(QStringLiteral("View Comments"));
    m_text2 = new QTextEdit(m_frame2);
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_text2->setReadOnly(true);
    auto *memoLayout = new QVBoxLayout(m_frame2);
    memoLayout->setContentsMargins(3, 3, 3, 3);
    memoLayout->addWidget(m_text2);
    m_frame2->hide();

    connect(&m_orderWatcher, &QFutureWatcherBase::finished, this, &TableDocumentView::orderingFinished);
    connect(&m_orderWatcher, &QFutureWatcherBase::progressValueChanged, m_orderProgress, &QProgressBar::setValue);
    connect(&m_openWatcher, &QFutureWatcherBase::finished, this, &TableDocumentView::openingFinished);
}

TableDocumentView::~TableDocumentView()
{
    // An open still running finishes on its own; its result goes unread.
    m_openWatcher.disconnect(this);
    cancelOrdering();
    m_grid->setModel(nullptr);
    delete m_model;
}

// ---------------------------------------------------------------- show table

void TableDocumentView::showDocument()
{
    showTable();
}

void TableDocumentView::showTable()
{
    m_columnTypes.fill(0);
    const double dpiX = logicalDpiX(), dpiY = logicalDpiY();
    QWidget *outer = host().outerWindow();
    if (outer != parentWidget())
        outer->move(twipsToPixels(WindowLeftTwips, dpiX), twipsToPixels(WindowTopTwips, dpiY));
    outer->resize(twipsToPixels(WindowWidthTwips, dpiX), twipsToPixels(WindowHeightTwips, dpiY));

    const QFileInfo info(document().path());
    m_folder = info.absolutePath();
    m_fileName = info.fileName();
    m_oneTableFile = !tables::offersTableList(m_extension);
    m_loginAsked = false;
    m_switchable = !m_oneTableFile;
    m_databaseName = m_oneTableFile ? m_folder : info.absoluteFilePath();
    m_recordSource = m_oneTableFile ? m_fileName : QString();
    // The grid and the record bar are there at once, the bar saying that
    // the file is being opened.
    layoutGrid();
    m_grid->show();
    m_data1->show();
    startOpening();
}

// What the worker opened: the file and its first table.
struct TableDocumentView::Opening {
    tables::OpenResult file;
    QString first;
    tables::Result<std::unique_ptr<tables::Table>> table;
};

void TableDocumentView::startOpening()
{
    m_opening = true;
    m_data1Caption->setText(QStringLiteral("Opening %1...").arg(m_fileName));
    // The worker holds nothing of the window: closed meanwhile, the window
    // leaves the worker's result to be dropped with the future.
    const QString path = document().path();
    const QString password = m_state.database.password;
    m_openWatcher.setFuture(QtConcurrent::run([path, password] {
        auto opening = std::make_shared<Opening>();
        opening->file = tables::openTableFile(path, password);
        if (opening->file.ok()) {
            opening->first = opening->file.file->tableNames().value(0);
            if (!opening->first.isEmpty())
                opening->table = opening->file.file->openTable(opening->first);
        }
        return opening;
    }));
}

void TableDocumentView::openingFinished()
{
    const std::shared_ptr<Opening> opening = m_openWatcher.result();
    tables::OpenResult &opened = opening->file;
    const bool needsPassword = opened.status == OpenStatus::PasswordRequired || opened.status == OpenStatus::WrongPassword;
    if (needsPassword && !m_loginAsked) {
        // The file cannot be opened without its password: ask for it once
        // and try again with what the login stored.
        m_loginAsked = true;
        Login login(document().path(), m_state, services(), this);
        if (login.exec() == QDialog::Accepted) {
            startOpening();
            return;
        }
    } else if (!opened.ok()) {
        services().messages.inform(opened.errorString, this);
    } else {
        m_file = std::move(opened.file);
    }
    m_opening = false;
    bool oneTableFile = m_oneTableFile;
    if (m_file) {
        // A ".db" file that is an SQLite database holds tables as an Access
        // file does, and offers them alike.
        if (m_file->formatName() == QLatin1String("SQLite")) {
            oneTableFile = false;
            m_switchable = true;
            m_databaseName = QFileInfo(document().path()).absoluteFilePath();
        }
        const QString first = tables::readDatabaseTables(*m_file, m_state.database);
        m_tableCount = m_state.database.tableCount;
        m_recordSource = oneTableFile ? m_fileName : first;
        if (!first.isEmpty() && first == opening->first)
            showOpenedTable(std::move(opening->table));
        else
            openTable(first);
    } else {
        m_state.database.tableNames.clear();
        m_state.database.tableCount = 0;
        m_tableCount = 0;
    }
    finishShowTable();
}

void TableDocumentView::finishShowTable()
{
    m_connect = tables::connectText(m_extension, m_state.database.password);
    m_data1Caption->setText(m_recordSource);

    fillLists();
    layoutGrid();
    m_grid->show();
    m_data1->show();
    enableCommands();
    emit opened();
}

void TableDocumentView::openTable(const QString &name)
{
    cancelOrdering();
    m_orderedBy.clear();
    m_grid->setModel(nullptr);
    delete m_model;
    m_model = nullptr;
    m_columnTypes.fill(0);
    m_indexNames.clear();
    m_state.database.fields.clear();
    m_state.database.lastField = -1;
    m_state.database.indexNames.clear();
    if (!m_file || name.isEmpty())
        return;
    showOpenedTable(m_file->openTable(name));
}

void TableDocumentView::showOpenedTable(tables::Result<std::unique_ptr<tables::Table>> opened)
{
    if (!opened.ok()) {
        services().messages.inform(opened.errorString, this);
        return;
    }
    tables::readTableStructure(*opened.value, m_state.database);
    m_indexNames = m_state.database.indexNames;
    const QList<tables::Field> fields = opened.value->fields();
    for (int c = 0; c < fields.size() && c < int(m_columnTypes.size()); ++c)
        m_columnTypes[size_t(c)] = fields[c].type;
    m_model = new tables::TableModel(std::move(opened.value));
    m_grid->setModel(m_model);
    connect(m_grid->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &TableDocumentView::currentCellChanged);
    setColumnWidths();
    if (m_model->rowCount() > 0 && m_model->columnCount() > 0)
        m_grid->setCurrentIndex(m_model->index(0, 0));
}

void TableDocumentView::fillLists()
{
    m_list1->clear();
    m_list1->addItems(m_state.database.tableNames);
    // A dBASE or Paradox file holds its own table only: its entry is shown
    // but cannot be chosen.
    const bool switchable = m_switchable;
    for (int i = 0; i < m_list1->count(); ++i) {
        QListWidgetItem *item = m_list1->item(i);
        if (!switchable)
            item->setFlags(item->flags() & ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable));
        if (item->text() == m_recordSource)
            item->setSelected(true);
    }
    m_list2->clear();
    m_list2->addItems(m_indexNames);
}

void TableDocumentView::layoutGrid()
{
    const double dpiX = logicalDpiX(), dpiY = logicalDpiY();
    const QWidget *outer = host().outerWindow();
    // The grid's margins are kept to the window's outer size, as the window
    // has always laid it out; the view's own size bounds it.
    const int outerWidthTwips = int(outer->width() * 1440.0 / dpiX);
    const int outerHeightTwips = int(outer->height() * 1440.0 / dpiY);
    const int left = twipsToPixels(GridLeftTwips, dpiX);
    const int top = twipsToPixels(GridTopTwips, dpiY);
    const int width = qBound(0, twipsToPixels(outerWidthTwips - GridWidthMarginTwips, dpiX), qMax(0, this->width() - left));
    const int height = qBound(0, twipsToPixels(outerHeightTwips - GridHeightMarginTwips, dpiY), qMax(0, this->height() - top));
    m_data1->setGeometry(left, 0, width, qMax(0, top - 2));
    m_grid->setGeometry(left, top, width, height);

    // The row height and text style of the table browsers (program options).
    const int rowTwips = m_state.options.tableRowHeight;
    if (rowTwips >= 250 && rowTwips <= 600)
        m_grid->verticalHeader()->setDefaultSectionSize(twipsToPixels(rowTwips, dpiY));
    const QString style = m_state.options.browserTextStyle;
    m_grid->setFrameShadow(style == QLatin1String("R") ? QFrame::Raised
                           : style == QLatin1String("F") ? QFrame::Plain
                                                         : QFrame::Sunken);

    // Colours: the database browser's, and the selection item's for the
    // current cell.
    QPalette palette = m_grid->palette();
    palette.setColor(QPalette::Base,
                     settings::toQColor(m_state.colors.swatch(settings::Swatch::DatabaseBrowserBack), palette));
    palette.setColor(QPalette::Text,
                     settings::toQColor(m_state.colors.swatch(settings::Swatch::DatabaseBrowserText), palette));
    palette.setColor(QPalette::Highlight,
                     settings::toQColor(m_state.colors.swatch(settings::Swatch::SelectionItemBack), palette));
    palette.setColor(QPalette::HighlightedText, palette.color(QPalette::Text));
    m_grid->setPalette(palette);
    layoutFrames();
}

void TableDocumentView::setColumnWidths()
{
    if (!m_model)
        return;
    const double dpiX = logicalDpiX();
    const QList<tables::Field> fields = m_model->table().fields();
    for (int c = 0; c < fields.size(); ++c)
        m_grid->setColumnWidth(c, twipsToPixels(tables::columnWidthTwips(fields[c]), dpiX));
}

void TableDocumentView::enableCommands()
{
    host().setFrameEnabled(keys::mnuViewTableComments, true);
    host().setFrameEnabled(keys::mnuSetTableComments, true);
    if (!m_indexNames.isEmpty()) {
        host().setFrameEnabled(keys::IndexBtn, true);
        host().setFrameEnabled(keys::mnuSetDatabaseTableIndex, true);
    }
    if (m_switchable) {
        host().setFrameEnabled(keys::TableBtn, true);
        host().setFrameEnabled(keys::mnuSetDatabaseTable, true);
    }
}

void TableDocumentView::activate()
{
    enableCommands();
    host().setFrameCheck(keys::TableBtn, m_tableListShown);
    host().setFrameCheck(keys::mnuSetDatabaseTable, m_tableListShown);
    host().setFrameCheck(keys::IndexBtn, m_indexListShown);
    host().setFrameCheck(keys::mnuSetDatabaseTableIndex, m_indexListShown);
    host().setFrameCheck(keys::mnuSetTableComments, m_commentsShown);
    host().setFrameCheck(keys::mnuViewTableComments, m_commentsShown);
}

void TableDocumentView::closing()
{
    cancelOrdering();
}

qint16 TableDocumentView::indexCount() const
{
    return qint16(qMin<qsizetype>(m_indexNames.size(), tables::maxIndexNames));
}

int TableDocumentView::columnType(int column) const
{
    return column >= 0 && column < int(m_columnTypes.size()) ? m_columnTypes[size_t(column)] : 0;
}

// ---------------------------------------------------------------- layout

void TableDocumentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_grid->isVisible())
        layoutGrid();
    else
        layoutFrames();
}

void TableDocumentView::layoutFrames()
{
    // The lists stand at the right of the grid, the memo box along its
    // bottom; both over the grid.
    const QRect grid = m_grid->geometry().isValid() ? m_grid->geometry() : rect();
    const int listWidth = qMin(grid.width(), qMax(160, grid.width() / 3));
    m_frame1->setGeometry(grid.right() - listWidth + 1, grid.top(), listWidth, grid.height());
    const int memoHeight = qMin(grid.height(), qMax(80, grid.height() / 3));
    m_frame2->setGeometry(grid.left(), grid.bottom() - memoHeight + 1, grid.width(), memoHeight);
}

void TableDocumentView::updateFrame1()
{
    m_list1->setVisible(m_tableListShown);
    m_list2->setVisible(m_indexListShown);
    const bool shown = m_tableListShown || m_indexListShown;
    m_frame1->setVisible(shown);
    if (shown)
        m_frame1->raise();
}

// ---------------------------------------------------------------- commands

void TableDocumentView::chooseTable()
{
    m_tableListShown = !m_tableListShown;
    updateFrame1();
    host().setFrameCheck(keys::mnuSetDatabaseTable, m_tableListShown);
    host().setFrameCheck(keys::TableBtn, m_tableListShown);
}

void TableDocumentView::chooseIndex()
{
    m_indexListShown = !m_indexListShown;
    updateFrame1();
    host().setFrameCheck(keys::mnuSetDatabaseTableIndex, m_indexListShown);
    host().setFrameCheck(keys::IndexBtn, m_indexListShown);
}

void TableDocumentView::ExitDBaseBtn_Click()
{
    m_tableListShown = false;
    m_indexListShown = false;
    m_frame1->hide();
    host().setFrameCheck(keys::mnuSetDatabaseTable, false);
    host().setFrameCheck(keys::mnuSetDatabaseTableIndex, false);
    host().setFrameCheck(keys::TableBtn, false);
    host().setFrameCheck(keys::IndexBtn, false);
}

void TableDocumentView::showComments()
{
    if (m_commentsShown) {
        m_commentsShown = false;
        m_frame2->hide();
        m_text2->clear();
        host().setFrameCheck(keys::mnuSetTableComments, false);
        host().setFrameCheck(keys::mnuViewTableComments, false);
        return;
    }
    const QModelIndex current = m_grid->currentIndex();
    if (!current.isValid() || columnType(current.column()) != tables::FieldType::Memo) {
        services().messages.inform(QStringLiteral("Please select a Comment Field to Display"), this);
        host().setFrameCheck(keys::mnuSetTableComments, false);
        return;
    }
    m_text2->setPlainText(current.data().toString());
    m_commentsShown = true;
    m_frame2->show();
    m_frame2->raise();
    host().setFrameCheck(keys::mnuSetTableComments, true);
    host().setFrameCheck(keys::mnuViewTableComments, true);
}

void TableDocumentView::currentCellChanged()
{
    if (m_commentsShown)
        m_text2->setPlainText(m_grid->currentIndex().data().toString());
}

void TableDocumentView::moveRecord(int to)
{
    if (!m_model || m_model->rowCount() == 0)
        return;
    const int row = qBound(0, to, m_model->rowCount() - 1);
    const int column = qMax(0, m_grid->currentIndex().column());
    const QModelIndex index = m_model->index(row, column);
    m_grid->setCurrentIndex(index);
    m_grid->scrollTo(index);
}

void TableDocumentView::copySelection()
{
    const QModelIndex current = m_grid->currentIndex();
    QApplication::clipboard()->setText(current.isValid() ? current.data().toString() : QString());
}

void TableDocumentView::List1_Click(const QString &tableName)
{
    if (!m_switchable || !m_file || !m_state.database.tableNames.contains(tableName))
        return;
    m_recordSource = tableName;
    m_data1Caption->setText(m_recordSource);
    openTable(tableName);
    m_list2->clear();
    m_list2->addItems(m_indexNames);
    if (!m_indexNames.isEmpty()) {
        host().setFrameEnabled(keys::IndexBtn, true);
        host().setFrameEnabled(keys::mnuSetDatabaseTableIndex, true);
    }
    currentCellChanged();
}

// ---------------------------------------------------------------- index order

void TableDocumentView::List2_Click(const QString &indexName)
{
    if (!m_model || !m_indexNames.contains(indexName))
        return;
    const tables::Result<tables::IndexKey> key = m_model->table().indexKey(indexName);
    if (!key.ok()) {
        services().messages.inform(key.errorString, this);
        emit indexApplied(indexName);
        return;
    }
    cancelOrdering();
    // The order is made from a table of its own, so that the grid keeps
    // reading its table meanwhile.
    auto cancel = std::make_shared<std::atomic_bool>(false);
    m_orderCancel = cancel;
    m_orderingIndex = indexName;
    const QString path = document().path();
    const QString password = m_state.database.password;
    const QString table = m_model->table().name();
    const tables::IndexKey order = key.value;
    const qint64 rows = m_model->table().rowCount();
    m_orderProgress->setRange(0, 1000);
    m_orderProgress->setValue(0);
    m_orderProgress->show();
    m_orderCancelButton->show();
    m_orderWatcher.setFuture(QtConcurrent::run(
        [path, password, table, order, rows, cancel](QPromise<tables::Result<tables::RowOrder>> &promise) {
            tables::OpenResult file = tables::openTableFile(path, password);
            if (!file.ok()) {
                promise.addResult(tables::Result<tables::RowOrder>::failure(file.errorString));
                return;
            }
            tables::Result<std::unique_ptr<tables::Table>> copy = file.file->openTable(table);
            if (!copy.ok()) {
                promise.addResult(tables::Result<tables::RowOrder>::failure(copy.errorString));
                return;
            }
            promise.addResult(tables::indexOrder(*copy.value, order, cancel.get(), [&](qint64 read) {
                promise.setProgressValue(rows > 0 ? int(read * 1000 / rows) : 1000);
            }));
        }));
}

void TableDocumentView::cancelOrdering()
{
    if (m_orderCancel)
        *m_orderCancel = true;
    m_orderCancel.reset();
    if (m_orderWatcher.isRunning()) {
        // The result of an abandoned order is of no use: wait for the worker
        // to notice, with the finished signal kept away from the view.
        m_orderWatcher.disconnect(this);
        m_orderWatcher.waitForFinished();
        connect(&m_orderWatcher, &QFutureWatcherBase::finished, this, &TableDocumentView::orderingFinished);
    }
    m_orderingIndex.clear();
    m_orderProgress->hide();
    m_orderCancelButton->hide();
}

void TableDocumentView::orderingFinished()
{
    m_orderProgress->hide();
    m_orderCancelButton->hide();
    const QString indexName = m_orderingIndex;
    m_orderingIndex.clear();
    m_orderCancel.reset();
    const QFuture<tables::Result<tables::RowOrder>> future = m_orderWatcher.future();
    if (indexName.isEmpty() || !m_model || future.resultCount() == 0)
        return;
    const tables::Result<tables::RowOrder> order = future.result();
    if (!order.ok()) {
        services().messages.inform(order.errorString, this);
    } else if (!order.value.empty() || m_model->rowCount() == 0) {
        const int column = qMax(0, m_grid->currentIndex().column());
        m_model->setOrder(order.value);
        m_orderedBy = indexName;
        if (m_model->rowCount() > 0)
            m_grid->setCurrentIndex(m_model->index(0, column));
    }
    emit indexApplied(indexName);
}

// ---------------------------------------------------------------- the file

void TableDocumentView::releaseFile(const QString &closeTextPath)
{
    // Every handle on the file is closed; the record bar names the small
    // text file kept for this instead.
    cancelOrdering();
    m_grid->setModel(nullptr);
    delete m_model;
    m_model = nullptr;
    m_file.reset();
    const QFileInfo closeText(closeTextPath);
    m_connect = QStringLiteral("Text;");
    m_databaseName = closeText.absolutePath();
    m_recordSource = closeText.fileName();
    m_data1Caption->setText(m_recordSource);
}

tables::FileProperties TableDocumentView::fileProperties() const
{
    tables::DatabaseFacts facts;
    facts.fileType = m_file ? m_file->formatName() : QString();
    facts.connect = m_connect;
    facts.recordSource = m_recordSource;
    if (m_model) {
        facts.recordCount = m_model->table().rowCount();
        facts.fields = m_model->table().fields();
        const int row = m_grid->currentIndex().row();
        if (row >= 0 && facts.recordCount > 0)
            facts.percentPosition = 100.0 * row / double(facts.recordCount);
    }
    const QFileInfo info(document().path());
    facts.lastModified = info.lastModified();
    facts.lastUpdated = info.lastModified();
    facts.dateCreated = info.birthTime();
    facts.fileSize = info.size();
    return tables::databaseFileProperties(facts);
}

} // namespace tarnby::ui
