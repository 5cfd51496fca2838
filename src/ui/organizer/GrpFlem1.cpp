#include "ui/organizer/GrpFlem1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "ui/organizer/DataControl.h"
#include "ui/organizer/GrpFind.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

using namespace organizer;

GrpFlem1::GrpFlem1(AppState &state, UiServices &services, const OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("GrpFlem1"));
    setWindowTitle(QStringLiteral("Add and Remove Files in the Group File Organizer"));

    auto *frame = new QGroupBox(QStringLiteral(" Select Files for the File Group "), this);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto *grid = new QGridLayout(frame);
    auto label = [frame](const QString &text) {
        auto *l = new QLabel(text, frame);
        l->setObjectName(QStringLiteral("Label1"));
        return l;
    };
    auto edit = [frame](const char *name, const QString &tooltip) {
        auto *e = new QLineEdit(frame);
        e->setObjectName(QLatin1String(name));
        e->setToolTip(tooltip);
        return e;
    };
    m_group = new QComboBox(frame);
    m_group->setObjectName(QStringLiteral("CMBGRP"));
    m_group->setEditable(true);
    m_group->setToolTip(QStringLiteral("Group to which file belongs"));
    m_fileName = edit("FldFileName", QStringLiteral("Name of File in Group"));
    m_filePath = edit("FldFilePath", QStringLiteral("Folder location or path of file in group"));
    m_fileDesc = edit("FldFileDesc", QStringLiteral("Description of file in group"));
    m_keyword = edit("FldFileKeywrd", QStringLiteral("Search word used to locate file in database"));
    m_comments = new QPlainTextEdit(frame);
    m_comments->setObjectName(QStringLiteral("FldComments"));
    m_comments->setToolTip(QStringLiteral("Enter Comment or Memo"));
    m_type = new QComboBox(frame);
    m_type->setObjectName(QStringLiteral("CMBTYPE"));
    m_type->setEditable(true);
    m_type->setToolTip(QStringLiteral("Type of File"));
    m_type->addItems({QStringLiteral("Database"), QStringLiteral("Document"), QStringLiteral("Multimedia"),
                      QStringLiteral("Picture"), QStringLiteral("System")});
    m_date = label(QString());
    m_time = label(QString());
    m_created = label(QStringLiteral("Date/Time"));
    m_hint = label(QStringLiteral("Click Check to Add"));
    m_hint->setVisible(false);
    m_image = new QLabel(frame);
    m_image->setObjectName(QStringLiteral("Image1"));
    m_image->setFixedSize(160, 120);
    m_image->setAlignment(Qt::AlignCenter);

    int row = 0;
    grid->addWidget(label(QStringLiteral("Group:")), row, 0);
    grid->addWidget(m_group, row++, 1);
    grid->addWidget(label(QStringLiteral("File Name:")), row, 0);
    grid->addWidget(m_fileName, row++, 1);
    grid->addWidget(label(QStringLiteral("Enter File Path:")), row, 0);
    grid->addWidget(m_filePath, row++, 1);
    grid->addWidget(label(QStringLiteral("Description:")), row, 0);
    grid->addWidget(m_fileDesc, row++, 1);
    grid->addWidget(label(QStringLiteral("Search Word:")), row, 0);
    grid->addWidget(m_keyword, row++, 1);
    grid->addWidget(label(QStringLiteral("Type:")), row, 0);
    grid->addWidget(m_type, row++, 1);
    grid->addWidget(label(QStringLiteral("Enter Comment or Memo:")), row, 0);
    grid->addWidget(m_comments, row++, 1);
    grid->addWidget(label(QStringLiteral("Date Created")), row, 0);
    grid->addWidget(m_date, row++, 1);
    grid->addWidget(label(QStringLiteral("Time Created")), row, 0);
    grid->addWidget(m_time, row++, 1);
    grid->addWidget(label(QStringLiteral("Date and Time Created:")), row, 0);
    grid->addWidget(m_created, row++, 1);
    grid->addWidget(m_hint, row++, 1);
    grid->addWidget(m_image, 0, 2, 6, 1);

    m_data = new DataControl(this);
    m_data->setObjectName(QStringLiteral("Data1"));
    m_data->setToolTip(QStringLiteral("Move backwards or Forward in the file"));
    connect(m_data, &DataControl::positionChanged, this, [this](int position) {
        keepTyping();
        show(position);
    });

    auto button = [this](const char *name, const QString &caption, const QString &tooltip, void (GrpFlem1::*slot)()) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(QLatin1String(name));
        b->setToolTip(tooltip);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    m_select = button("SelectBtn", QString(), QStringLiteral("Add Highlighted File in Main Window to Group in this Window"),
                      &GrpFlem1::selectClicked);
    m_select->setIcon(picture(QStringLiteral("Check.BMP")));
    m_sort = button("SortBtn", QString(), QStringLiteral("Sort File by Group or File Name"), &GrpFlem1::sortClicked);
    m_sort->setIcon(picture(QStringLiteral("BulbOff.Bmp")));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_select);
    buttons->addWidget(button("SaveBtn", QStringLiteral("Save"), QStringLiteral("Save the File information to the Selected Group"),
                              &GrpFlem1::saveClicked));
    buttons->addWidget(button("CnclBtn", QStringLiteral("Cancel"), QStringLiteral("Refresh or Cancel the File information from the File"),
                              &GrpFlem1::cancelClicked));
    buttons->addWidget(button("DeleteBtn", QStringLiteral("Delete"), QStringLiteral("Delete the File Information from the Group"),
                              &GrpFlem1::deleteClicked));
    buttons->addWidget(m_sort);
    buttons->addWidget(button("FindBtn", QStringLiteral("Find"), QStringLiteral("Search for File Name or File using Search Word"),
                              &GrpFlem1::findClicked));
    auto *exit = new QPushButton(QStringLiteral("Exit"), this);
    exit->setObjectName(QStringLiteral("ExitBtn"));
    exit->setToolTip(QStringLiteral("Close the Create and Change File Group Window"));
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);
    buttons->addWidget(exit);
    buttons->addWidget(button("HelpBtn", QStringLiteral("Help"), QStringLiteral("Help with entering the File information into the group"),
                              &GrpFlem1::helpRequested));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addWidget(m_data);
    layout->addLayout(buttons);
    applyWindowColors(this, state);

    // The groups the entry can belong to.
    StoreResult r;
    const QStringList groups = m_store.groupNames(&r);
    if (failed(r))
        return;
    m_group->addItems(groups);
    if (groups.isEmpty())
        m_services.messages.inform(QStringLiteral("No Groups to contain Files - Create a new Group using the Create "
                                                  "and Maintain Groups Organize Menu Option"),
                                   this);
    // The highlighted file's entry, found by its name; a new entry for it
    // when the table is empty.
    const SplitName highlighted = splitFullName(m_state.currentFile);
    const std::optional<FileEntry> found = m_store.findFileName(highlighted.fileName, &r);
    reload(found ? found->ID : 0);
}

QIcon GrpFlem1::picture(const QString &name) const
{
    return QIcon(QDir(m_state.programFolder).filePath(QStringLiteral("BMPS/") + name));
}

QString GrpFlem1::hint() const
{
    return m_hint->isHidden() ? QString() : m_hint->text();
}

bool GrpFlem1::previewShown() const
{
    return !m_image->pixmap().isNull();
}

bool GrpFlem1::failed(const StoreResult &result)
{
    if (result.ok())
        return false;
    m_services.messages.inform(dataErrorText(result), this);
    return true;
}

void GrpFlem1::reload(qint64 showId)
{
    StoreResult r;
    m_ids = m_store.entryIds(m_order, &r);
    if (failed(r))
        return;
    if (m_ids.isEmpty()) {
        selectClicked();
        return;
    }
    m_mode = QStringLiteral("E");
    const int position = std::max<int>(0, int(m_ids.indexOf(showId)));
    m_data->setShowsPosition(true);
    m_data->setRecords(int(m_ids.size()), position);
    show(position);
}

void GrpFlem1::show(int position)
{
    if (m_mode != QLatin1String("E"))
        m_mode = QStringLiteral("E");
    StoreResult r;
    m_row = m_store.entry(m_ids.value(position), &r);
    if (failed(r) || !m_row)
        return;
    fillFields(*m_row);
}

void GrpFlem1::showEntry(qint64 id)
{
    keepTyping();
    reload(id);
}

void GrpFlem1::fillFields(const FileEntry &e)
{
    m_group->setEditText(e.GroupName);
    m_fileName->setText(e.FileName);
    m_filePath->setText(e.FileLocation);
    m_fileDesc->setText(e.FileDescription);
    m_keyword->setText(e.FileKeyword);
    m_comments->setPlainText(e.Comments);
    m_type->setEditText(e.FileType);
    m_date->setText(sortKeyToDisplayDate(e.Date));
    m_time->setText(e.Time);
    m_created->setText(e.DateDisp.isEmpty() ? QStringLiteral("Date/Time") : e.DateDisp);
    m_image->clear();
    if (e.FileType == QLatin1String("Picture")) {
        // A small preview, read scaled so that a large picture costs little.
        QImageReader reader(entryFullName(e.FileLocation, e.FileName));
        const QSize size = reader.size();
        if (size.isValid())
            reader.setScaledSize(size.scaled(m_image->size(), Qt::KeepAspectRatio));
        const QImage image = reader.read();
        if (!image.isNull())
            m_image->setPixmap(QPixmap::fromImage(image));
    }
}

FileEntry GrpFlem1::fieldsToRow(FileEntry row) const
{
    row.GroupName = m_group->currentText();
    row.FileName = m_fileName->text();
    row.FileLocation = m_filePath->text();
    row.FileDescription = m_fileDesc->text();
    row.FileKeyword = m_keyword->text();
    row.Comments = m_comments->toPlainText();
    row.FileType = m_type->currentText();
    return row;
}

void GrpFlem1::keepTyping()
{
    if (m_mode != QLatin1String("E") || !m_row)
        return;
    const FileEntry typed = fieldsToRow(*m_row);
    if (typed.GroupName != m_row->GroupName || typed.FileName != m_row->FileName
        || typed.FileLocation != m_row->FileLocation || typed.FileDescription != m_row->FileDescription
        || typed.FileKeyword != m_row->FileKeyword || typed.Comments != m_row->Comments || typed.FileType != m_row->FileType)
        failed(m_store.updateEntry(typed));
}

void GrpFlem1::selectClicked()
{
    m_mode = QStringLiteral("A");
    m_row.reset();
    m_data->setShowsPosition(false);
    const FileEntry e = entryForFile(m_group->currentText(), m_state.currentFile);
    m_type->setEditText(e.FileType);
    m_fileName->setText(e.FileName);
    m_filePath->setText(e.FileLocation);
    m_fileDesc->setText(e.FileDescription);
    m_keyword->setText(e.FileKeyword);
    m_comments->clear();
    m_date->clear();
    m_time->clear();
    m_image->clear();
    m_hint->setText(QStringLiteral("Click Check to Add"));
    m_hint->setVisible(true);
    m_checkPicture = !m_checkPicture;
    m_select->setIcon(picture(m_checkPicture ? QStringLiteral("Check.BMP") : QStringLiteral("Undo.Bmp")));
}

void GrpFlem1::saveClicked()
{
    const TimeStamp stamp = SetTimeStamp();
    const bool adding = m_mode == QLatin1String("A") || !m_row;
    FileEntry row = fieldsToRow(adding ? FileEntry{} : *m_row);
    // The file's own date and time, as the system prints them.
    fileDateFields(entryFullName(row.FileLocation, row.FileName), &row.Date, &row.Time);
    row.DateDisp = stamp.StampDisplay;
    StoreResult r;
    qint64 id = row.ID;
    if (adding) {
        row.DateTimeCreated = stamp.StampDateTime;
        const QList<qint64> ids = m_store.addEntries({row}, &r);
        if (failed(r))
            return;
        // The new entry stays shown: found again by its name in the
        // "FileName" order, the first of equal names.
        m_order = TableOrder::FileName;
        const std::optional<FileEntry> again = m_store.findFileName(row.FileName, &r);
        id = again ? again->ID : ids.value(0);
    } else if (failed(m_store.updateEntry(row))) {
        return;
    }
    reload(id);
    m_created->setText(stamp.StampDisplay);
    m_hint->setText(QStringLiteral("-Saved-"));
    m_hint->setVisible(true);
}

void GrpFlem1::cancelClicked()
{
    reload(m_row ? m_row->ID : 0);
}

void GrpFlem1::deleteClicked()
{
    const QString name = m_fileName->text();
    if (!m_services.messages.ask(QStringLiteral("Are you sure you want to Delete File - ") + name
                                     + QStringLiteral(" from the Database"),
                                 this))
        return;
    if (!m_row) {
        reload(0);
        return;
    }
    m_mode = QStringLiteral("D");
    if (failed(m_store.deleteEntry(m_row->ID)))
        return;
    const int position = m_data->position();
    const qint64 next = m_ids.value(position + 1, m_ids.value(position - 1));
    m_row.reset();
    reload(next);
}

void GrpFlem1::sortClicked()
{
    keepTyping();
    m_order = m_order == TableOrder::FileName ? TableOrder::GroupName : TableOrder::FileName;
    m_sort->setIcon(picture(m_order == TableOrder::FileName ? QStringLiteral("BulbOff.Bmp") : QStringLiteral("BulbOn.Bmp")));
    reload(0);
}

void GrpFlem1::findClicked()
{
    GrpFind1 find(m_state, m_services, m_store, this);
    if (find.exec() == QDialog::Accepted && find.found())
        showEntry(find.found()->ID);
}

} // namespace tarnby::ui
