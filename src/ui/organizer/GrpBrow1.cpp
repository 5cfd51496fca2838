#include "ui/organizer/GrpBrow1.h"

#include "core/app/AppState.h"
#include "ui/organizer/DataControl.h"
#include "ui/organizer/GrpFind.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QDir>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace tarnby::ui {

using namespace organizer;

GrpBrow1::GrpBrow1(AppState &state, UiServices &services, const OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("GrpBrow1"));
    setWindowTitle(QStringLiteral("Browse and View Files from File Group"));
    resize(900, 520);

    m_entries = new EntryGridModel(this);
    m_groups = new GroupGridModel(this);
    auto makeGrid = [this](QAbstractItemModel *model, int index) {
        auto *grid = new QTableView(this);
        grid->setObjectName(QStringLiteral("MSFlexGrid1"));
        grid->setProperty("index", index);
        grid->setModel(model);
        grid->setSelectionBehavior(QAbstractItemView::SelectRows);
        grid->setSelectionMode(QAbstractItemView::SingleSelection);
        grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
        grid->setAlternatingRowColors(true);
        grid->horizontalHeader()->setStretchLastSection(true);
        grid->setShowGrid(m_state.options.gridLines);
        return grid;
    };
    m_entryGrid = makeGrid(m_entries, 0);
    m_groupGrid = makeGrid(m_groups, 1);
    connect(m_entryGrid, &QTableView::clicked, this, [this](const QModelIndex &i) { entryRowClicked(i.row()); });
    connect(m_groupGrid, &QTableView::clicked, this, [this](const QModelIndex &i) { groupRowClicked(i.row()); });
    m_stack = new QStackedWidget(this);
    m_stack->addWidget(m_entryGrid);
    m_stack->addWidget(m_groupGrid);

    auto makeData = [this](int index) {
        auto *data = new DataControl(this);
        data->setObjectName(QStringLiteral("Data1"));
        data->setProperty("index", index);
        data->setShowsPosition(false);
        return data;
    };
    m_entryData = makeData(0);
    m_groupData = makeData(1);
    m_groupData->hide();
    // The data control moves the grid's current row; its caption names the
    // entry it stands on, or says that the end was passed.
    connect(m_entryData, &DataControl::positionChanged, this, [this](int row) {
        bool past = m_entryData->pastEnd();
        if (past && m_entries->canFetchMore({})) {
            m_entries->fetchMore({});
            past = row + 1 >= m_entries->rowCount();
            row = past ? row : row + 1;
        }
        m_entryData->setRecords(m_entries->rowCount(), row);
        const FileEntry *e = m_entries->entryAt(row);
        m_entryGrid->selectRow(row);
        m_entryData->setCaption(past || !e ? QStringLiteral("End of File Reached")
                                           : QStringLiteral("Rec. ID: %1").arg(e->ID));
    });
    connect(m_groupData, &DataControl::positionChanged, this, [this](int row) { m_groupGrid->selectRow(row); });
    auto countRows = [this] { m_entryData->setRecords(m_entries->rowCount(), m_entryData->position()); };
    connect(m_entries, &QAbstractItemModel::modelReset, this, countRows);
    connect(m_entries, &QAbstractItemModel::rowsInserted, this, countRows);
    connect(m_groups, &QAbstractItemModel::modelReset, this,
            [this] { m_groupData->setRecords(m_groups->rowCount(), 0); });

    m_sortFrame = new QGroupBox(QStringLiteral("Select Field to Sort Table"), this);
    m_sortFrame->setObjectName(QStringLiteral("Frame2"));
    m_sortList = new QListWidget(m_sortFrame);
    m_sortList->setObjectName(QStringLiteral("List1"));
    for (int i = 0; i < SortChoiceCount; ++i)
        m_sortList->addItem(QLatin1String(sortChoice(i).caption));
    m_sortList->setCurrentRow(0);
    connect(m_sortList, &QListWidget::itemClicked, this, [this](QListWidgetItem *item) { sortChosen(m_sortList->row(item)); });
    auto *sortLayout = new QVBoxLayout(m_sortFrame);
    sortLayout->addWidget(m_sortList);

    auto button = [this](const char *name, const QString &caption, const QString &tooltip) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(QLatin1String(name));
        b->setToolTip(tooltip);
        return b;
    };
    m_sort = button("SortBtn", QStringLiteral("Sort"), QStringLiteral("Sort Files in Group to Display"));
    connect(m_sort, &QPushButton::clicked, this, [this] { sortChosen(m_sortList->currentRow()); });
    auto *find = button("FindBtn", QStringLiteral("Find"), QStringLiteral("Select File in Group to Display"));
    connect(find, &QPushButton::clicked, this, &GrpBrow1::findClicked);
    m_select = button("SelectBtn", QStringLiteral("Select"), QStringLiteral("Select File in Group to Display"));
    connect(m_select, &QPushButton::clicked, this, &GrpBrow1::selectClicked);
    m_switch = button("SwitchBtn", QString(), QStringLiteral("Alternate between Group definition and Files in a Group"));
    m_switch->setIcon(picture(QStringLiteral("BulbOff.Bmp")));
    connect(m_switch, &QPushButton::clicked, this, &GrpBrow1::switchClicked);
    auto *help = button("HelpBtn", QStringLiteral("Help"), QStringLiteral("Help with Group File Browser Window"));
    connect(help, &QPushButton::clicked, this, &GrpBrow1::helpRequested);

    auto *side = new QVBoxLayout;
    side->addWidget(m_sortFrame);
    for (QPushButton *b : {m_sort, find, m_select, m_switch, help})
        side->addWidget(b);
    side->addStretch();
    auto *left = new QVBoxLayout;
    left->addWidget(m_stack, 1);
    left->addWidget(m_entryData);
    left->addWidget(m_groupData);
    auto *layout = new QHBoxLayout(this);
    layout->addLayout(left, 1);
    layout->addLayout(side);
    applyWindowColors(this, state);

    // The groups in "GroupName" order; the first one's entries in the order
    // they were added.
    StoreResult r;
    if (!m_groups->load(m_store, &r)) {
        m_services.messages.inform(dataErrorText(r), this);
        return;
    }
    if (const GroupRow *first = m_groups->groupAt(0))
        m_group = first->GroupName;
    runQuery();
}

QIcon GrpBrow1::picture(const QString &name) const
{
    return QIcon(QDir(m_state.programFolder).filePath(QStringLiteral("BMPS/") + name));
}

bool GrpBrow1::groupGridShown() const
{
    return m_stack->currentWidget() == m_groupGrid;
}

void GrpBrow1::runQuery()
{
    StoreResult r;
    if (!m_entries->setQuery(m_store, m_group, m_key, &r))
        m_services.messages.inform(dataErrorText(r), this);
    m_entryData->setRecords(m_entries->rowCount(), 0);
    m_entryData->setCaption(QString());
}

void GrpBrow1::sortChosen(int position)
{
    if (position < 0 || position >= SortChoiceCount)
        return;
    m_sortList->setCurrentRow(position);
    m_key = keyAfterChoice(position, m_key);
    runQuery();
}

void GrpBrow1::entryRowClicked(int row)
{
    const FileEntry *e = m_entries->entryAt(row);
    if (!e)
        return;
    m_entryData->setRecords(m_entries->rowCount(), row);
    m_entryGrid->selectRow(row);
    m_entryData->setCaption(QStringLiteral("Record ID: %1").arg(e->ID));
}

void GrpBrow1::groupRowClicked(int row)
{
    const GroupRow *g = m_groups->groupAt(row);
    if (!g)
        return;
    m_groupGrid->selectRow(row);
    m_group = g->GroupName;
    m_sortList->setCurrentRow(0);
    m_key = SortKey::ID;
    runQuery();
}

void GrpBrow1::switchClicked()
{
    const bool toGroups = !groupGridShown();
    m_stack->setCurrentWidget(toGroups ? static_cast<QWidget *>(m_groupGrid) : m_entryGrid);
    m_entryData->setVisible(!toGroups);
    m_groupData->setVisible(toGroups);
    m_select->setEnabled(!toGroups);
    m_sort->setEnabled(!toGroups);
    m_sortFrame->setEnabled(!toGroups);
    m_switch->setIcon(picture(toGroups ? QStringLiteral("BulbOn.Bmp") : QStringLiteral("BulbOff.Bmp")));
}

void GrpBrow1::selectClicked()
{
    const QModelIndexList rows = m_entryGrid->selectionModel()->selectedRows();
    const FileEntry *e = m_entries->entryAt(rows.isEmpty() ? m_entryData->position() : rows.first().row());
    if (!e)
        return;
    // No separator is added after a folder that already ends with one (the
    // root).
    const QString folder = e->FileLocation;
    emit fileSelected(folder.endsWith(QLatin1Char('/')) ? folder + e->FileName : folder + QLatin1Char('/') + e->FileName);
}

bool GrpBrow1::showEntry(qint64 id)
{
    const int row = m_entries->rowForId(id);
    if (row < 0)
        return false;
    entryRowClicked(row);
    m_entryGrid->scrollTo(m_entries->index(row, 0));
    return true;
}

void GrpBrow1::findClicked()
{
    GrpFind2 find(m_state, m_services, m_store, this);
    if (find.exec() != QDialog::Accepted || !find.found())
        return;
    // The entry found may belong to another group: its group is shown.
    if (find.found()->GroupName.compare(m_group, Qt::CaseInsensitive) != 0) {
        m_group = find.found()->GroupName;
        m_key = SortKey::ID;
        m_sortList->setCurrentRow(0);
        runQuery();
    }
    showEntry(find.found()->ID);
}

} // namespace tarnby::ui
