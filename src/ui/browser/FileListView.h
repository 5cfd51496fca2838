#pragma once

#include "core/browser/BrowserValues.h"

#include <QStackedWidget>

class QAbstractItemView;
class QStyledItemDelegate;
class QItemSelectionModel;
class QListView;
class QTreeView;

namespace tarnby {
class FileListModel;
}

namespace tarnby::ui {

// The browser's file list (object name "PTxShList1") in its four view styles:
// large icons, small icons and list share one list view, details is a view
// with size, date and type columns. Both views show the same model and the
// same selection, so a style change keeps the selected file.
class FileListView : public QStackedWidget
{
    Q_OBJECT
public:
    FileListView(FileListModel *model, QWidget *parent = nullptr);

    void setViewStyle(ViewStyle style);
    ViewStyle viewStyle() const { return m_style; }
    // Grid lines between the cells of the details view ("Use Grid Lines").
    void setGridLines(bool on);
    bool gridLines() const;

    // The view that shows the list in the current style.
    QAbstractItemView *currentView() const;
    QListView *iconView() const { return m_icons; }
    QTreeView *detailsView() const { return m_details; }
    QItemSelectionModel *selectionModel() const;

    // The row of the current item, -1 without one.
    int currentRow() const;
    void setCurrentRow(int row);

signals:
    // A file or folder was chosen: double-click or Enter.
    void activated(int row);
    // The current item changed (-1: none).
    void currentRowChanged(int row);

private:
    FileListModel *m_model;
    QListView *m_icons;
    QStyledItemDelegate *m_names = nullptr;
    QTreeView *m_details;
    QStyledItemDelegate *m_grid = nullptr;
    ViewStyle m_style = ViewStyle::Details;
};

} // namespace tarnby::ui
