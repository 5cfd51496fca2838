#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

class DataControl;
struct UiServices;

// "Add and Remove Files in the Group File Organizer": the FileTable entry of
// the file highlighted in the browser, one entry at a time, paged in the
// order of the "FileName" index (or of "GroupName" after SortBtn). Mode "A"
// adds, "E" edits, "D" while a delete is carried out. Moving to another row
// keeps what was typed into the shown one; an unsaved addition is dropped.
class GrpFlem1 : public QDialog
{
    Q_OBJECT
public:
    GrpFlem1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr);

    QString mode() const { return m_mode; }
    std::optional<organizer::FileEntry> currentRow() const { return m_row; }
    DataControl *dataControl() const { return m_data; }
    organizer::TableOrder order() const { return m_order; }
    QString hint() const;
    bool previewShown() const;

    void selectClicked();
    void saveClicked();
    void cancelClicked();
    void deleteClicked();
    void sortClicked();
    void findClicked();
    // Shows the entry with id (the find window's answer).
    void showEntry(qint64 id);

signals:
    void helpRequested();

private:
    void reload(qint64 showId);
    void show(int position);
    void fillFields(const organizer::FileEntry &e);
    organizer::FileEntry fieldsToRow(organizer::FileEntry row) const;
    void keepTyping();
    bool failed(const organizer::StoreResult &result);
    QIcon picture(const QString &name) const;

    AppState &m_state;
    UiServices &m_services;
    organizer::OrganizerStore m_store;
    QString m_mode;
    organizer::TableOrder m_order = organizer::TableOrder::FileName;
    QList<qint64> m_ids;
    std::optional<organizer::FileEntry> m_row;
    bool m_checkPicture = true;
    QComboBox *m_group = nullptr;
    QLineEdit *m_fileName = nullptr;
    QLineEdit *m_filePath = nullptr;
    QLineEdit *m_fileDesc = nullptr;
    QLineEdit *m_keyword = nullptr;
    QPlainTextEdit *m_comments = nullptr;
    QComboBox *m_type = nullptr;
    QLabel *m_date = nullptr;
    QLabel *m_time = nullptr;
    QLabel *m_created = nullptr;
    QLabel *m_hint = nullptr;
    QLabel *m_image = nullptr;
    DataControl *m_data = nullptr;
    QPushButton *m_select = nullptr;
    QPushButton *m_sort = nullptr;
};

} // namespace tarnby::ui
