#include "ui/browser/FileListView.h"

#include "core/browser/FileListModel.h"

#include <QHeaderView>
#include <QListView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTreeView>

namespace tarnby::ui {

namespace {

// The list view gives every item one size (a folder of 100,000 names lays
// out at once), and that size would be the one item's that the view happens
// to ask about. This delegate answers with the size of the longest names
// shown, measured once per listing or filter, so that no name is cut.
class WholeNameDelegate : public QStyledItemDelegate
{
public:
    WholeNameDelegate(FileListModel *model, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_model(model)
    {
        connect(model, &QAbstractItemModel::modelReset, this, [this] { m_size = QSize(); });
        connect(model, &QAbstractItemModel::layoutChanged, this, [this] { m_size = QSize(); });
        connect(model, &QAbstractItemModel::rowsInserted, this, [this] { m_size = QSize(); });
    }

    // 0: as wide as the longest name; otherwise no wider than this. Below
    // 0: each item as the view measures it (the icon grid wraps names itself).
    void setMaximumWidth(int width)
    {
        m_maximumWidth = width;
        m_size = QSize();
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        if (m_maximumWidth < 0)
            return QStyledItemDelegate::sizeHint(option, index);
        if (!m_size.isValid()) {
            // Names of about the same length differ in width by their
            // letters; measuring the longest few covers that.
            QSize size = QStyledItemDelegate::sizeHint(option, index);
            for (int row : m_model->longestNameRows(16))
                size = size.expandedTo(QStyledItemDelegate::sizeHint(option, m_model->index(row, 0)));
            if (m_maximumWidth > 0)
                size.setWidth(std::min(size.width(), m_maximumWidth));
            m_size = size;
        }
        return m_size;
    }

private:
    FileListModel *m_model;
    int m_maximumWidth = 0;
    mutable QSize m_size;
};

// The details view's cells, with grid lines along their right and bottom
// edges when the option asks for them.
class GridLineDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    bool lines = false;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        if (!lines)
            return;
        painter->save();
        painter->setPen(option.palette.color(QPalette::Mid));
        painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
        painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
        painter->restore();
    }
};

void prepareView(QAbstractItemView *view)
{
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Files are dragged onto folders of the tree: moved, or copied with Ctrl.
    view->setDragEnabled(true);
    view->setDragDropMode(QAbstractItemView::DragOnly);
    view->setDefaultDropAction(Qt::MoveAction);
}

} // namespace

FileListView::FileListView(FileListModel *model, QWidget *parent)
    : QStackedWidget(parent)
    , m_model(model)
{
    setObjectName(QStringLiteral("PTxShList1"));

    m_icons = new QListView(this);
    m_icons->setObjectName(QStringLiteral("IconView"));
    m_icons->setModel(model);
    m_icons->setUniformItemSizes(true); // keeps a list of 100,000 names quick to lay out
    m_icons->setLayoutMode(QListView::Batched);
    m_icons->setBatchSize(500);
    m_names = new WholeNameDelegate(model, m_icons);
    m_icons->setItemDelegate(m_names);
    prepareView(m_icons);
    addWidget(m_icons);

    m_details = new QTreeView(this);
    m_details->setObjectName(QStringLiteral("DetailsView"));
    m_details->setModel(model);
    m_details->setSelectionModel(m_icons->selectionModel());
    m_details->setRootIsDecorated(false);
    m_details->setItemsExpandable(false);
    m_details->setUniformRowHeights(true);
    m_details->setAllColumnsShowFocus(true);
    m_grid = new GridLineDelegate(m_details);
    m_details->setItemDelegate(m_grid);
    m_details->header()->setStretchLastSection(false);
    m_details->header()->setSectionResizeMode(FileListModel::NameColumn, QHeaderView::Stretch);
    m_details->header()->resizeSection(FileListModel::SizeColumn, 90);
    m_details->header()->resizeSection(FileListModel::DateColumn, 160);
    m_details->header()->resizeSection(FileListModel::TypeColumn, 120);
    prepareView(m_details);
    addWidget(m_details);

    for (QAbstractItemView *view : {static_cast<QAbstractItemView *>(m_icons), static_cast<QAbstractItemView *>(m_details)})
        connect(view, &QAbstractItemView::activated, this, [this](const QModelIndex &index) { emit activated(index.row()); });
    connect(m_icons->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) { emit currentRowChanged(current.isValid() ? current.row() : -1); });
    // A new listing resets the model and with it the current item.
    connect(model, &QAbstractItemModel::modelReset, this, [this] { emit currentRowChanged(-1); });

    setViewStyle(ViewStyle::Details);
}

void FileListView::setViewStyle(ViewStyle style)
{
    m_style = style;
    switch (style) {
    case ViewStyle::LargeIcons:
        // Large icons keep a grid of their own and wrap long names in it.
        static_cast<WholeNameDelegate *>(m_names)->setMaximumWidth(-1);
        m_icons->setViewMode(QListView::IconMode);
        m_icons->setIconSize(QSize(32, 32));
        m_icons->setGridSize(QSize(96, 72));
        m_icons->setFlow(QListView::LeftToRight);
        m_icons->setWrapping(true);
        m_icons->setResizeMode(QListView::Adjust);
        m_icons->setMovement(QListView::Static);
        m_icons->setWordWrap(true);
        setCurrentWidget(m_icons);
        break;
    case ViewStyle::SmallIcons:
        // Rows of names, each column as wide as the longest name, within
        // reason: a single very long name must not leave one column a screen.
        static_cast<WholeNameDelegate *>(m_names)->setMaximumWidth(360);
        m_icons->setViewMode(QListView::ListMode);
        m_icons->setIconSize(QSize(16, 16));
        m_icons->setGridSize(QSize());
        m_icons->setFlow(QListView::LeftToRight);
        m_icons->setWrapping(true);
        m_icons->setResizeMode(QListView::Adjust);
        m_icons->setWordWrap(false);
        setCurrentWidget(m_icons);
        break;
    case ViewStyle::List:
        static_cast<WholeNameDelegate *>(m_names)->setMaximumWidth(0);
        m_icons->setViewMode(QListView::ListMode);
        m_icons->setIconSize(QSize(16, 16));
        m_icons->setGridSize(QSize());
        m_icons->setFlow(QListView::TopToBottom);
        m_icons->setWrapping(true);
        m_icons->setResizeMode(QListView::Adjust);
        m_icons->setWordWrap(false);
        setCurrentWidget(m_icons);
        break;
    case ViewStyle::Details:
        setCurrentWidget(m_details);
        break;
    }
}

void FileListView::setGridLines(bool on)
{
    auto *grid = static_cast<GridLineDelegate *>(m_grid);
    if (grid->lines == on)
        return;
    grid->lines = on;
    m_details->viewport()->update();
}

bool FileListView::gridLines() const
{
    return static_cast<GridLineDelegate *>(m_grid)->lines;
}

QAbstractItemView *FileListView::currentView() const
{
    return m_style == ViewStyle::Details ? static_cast<QAbstractItemView *>(m_details)
                                         : static_cast<QAbstractItemView *>(m_icons);
}

QItemSelectionModel *FileListView::selectionModel() const
{
    return m_icons->selectionModel();
}

int FileListView::currentRow() const
{
    const QModelIndex current = selectionModel()->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void FileListView::setCurrentRow(int row)
{
    const QModelIndex index = m_model->index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (index.isValid())
        currentView()->scrollTo(index);
}

} // namespace tarnby::ui
