#include "ui/settings/SetFoldr1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/settings/WorkingFolders.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QComboBox>
#include <QDir>
#include <QDirIterator>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStorageInfo>
#include <QTreeView>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {

// File1 shows a preview of the folder; a folder of a hundred thousand files
// must not stall the window, so the listing stops here.
constexpr int MaxListedFiles = 2000;

QPushButton *button(QWidget *parent, const char *name, const char *caption, const char *tooltip)
{
    auto *b = new QPushButton(QLatin1String(caption), parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    return b;
}

} // namespace

SetFoldr1::SetFoldr1(AppState &state, UiServices &services, const QString &startFolder, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("SetFoldr1"));
    setWindowTitle(QStringLiteral("Create List of Preset Folders for Quick Location"));

    m_drive = new QComboBox(this);
    m_drive->setObjectName(QStringLiteral("Drive1"));
    m_drive->setToolTip(QStringLiteral("Select Drive for Folder to Save in List"));
    QStringList roots;
    for (const QStorageInfo &volume : QStorageInfo::mountedVolumes()) {
        if (volume.isValid() && volume.isReady() && !roots.contains(volume.rootPath()))
            roots << volume.rootPath();
    }
    if (!roots.contains(QDir::rootPath()))
        roots.prepend(QDir::rootPath());
    roots.sort();
    m_drive->addItems(roots);

    m_dirModel = new QFileSystemModel(this);
    m_dirModel->setFilter(QDir::AllDirs | QDir::NoDotAndDotDot);
    m_dir = new QTreeView(this);
    m_dir->setObjectName(QStringLiteral("Dir1"));
    m_dir->setToolTip(QStringLiteral("Select Folder to Save in List"));
    m_dir->setModel(m_dirModel);
    for (int c = 1; c < m_dirModel->columnCount(); ++c)
        m_dir->hideColumn(c);
    m_dir->setHeaderHidden(true);

    m_files = new QListWidget(this);
    m_files->setObjectName(QStringLiteral("File1"));
    m_files->setToolTip(QStringLiteral("display of Files in Folder"));

    m_filter = new QComboBox(this);
    m_filter->setObjectName(QStringLiteral("CMBFILTER"));
    for (int i = 0; i < catalogue::FilterCount; ++i)
        m_filter->addItem(QLatin1String(catalogue::FilterDescriptions[i]), i);

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(QStringLiteral("Folders and Filter Selected"));

    auto *right = button(this, "RightBtn", ">", "Select Folder to List for Quick Location");
    auto *left = button(this, "LefttBtn", "<", "Remove Folder from Quick Folder Location List");
    auto *up = button(this, "UpBtn", "Up", "Move Highlighted Folder Up one Position");
    auto *down = button(this, "DownBtn", "Down", "Move Highlighted Folder Down one Position");
    auto *clear = button(this, "ClearBtn", "Clear", "Clear all Folders from the List");
    auto *ok = button(this, "OKBtn", "OK", "Click OK to Save all the Selected Folders to File");
    auto *cancel = button(this, "CancelBtn", "Cancel", "Close the Select Folders for Quick Viewing Window Setup");
    auto *help = button(this, "HelpBtn", "Help", "Help with the Select Folders for Quick Viewing Window Setup");
    ok->setDefault(true);

    auto *note = new QLabel(
        QStringLiteral("The Filter for each Folder will be saved with the folder, and reset when using the list."), this);
    note->setObjectName(QStringLiteral("Label2"));
    note->setWordWrap(true);
    auto *listLabel = new QLabel(QStringLiteral("List of Selected Folders"), this);
    listLabel->setObjectName(QStringLiteral("Label1"));

    auto *grid = new QGridLayout(this);
    auto *leftColumn = new QVBoxLayout;
    leftColumn->addWidget(m_drive);
    leftColumn->addWidget(m_dir, 2);
    leftColumn->addWidget(m_filter);
    leftColumn->addWidget(m_files, 1);
    grid->addLayout(leftColumn, 0, 0);
    auto *middle = new QVBoxLayout;
    middle->addStretch();
    for (QPushButton *b : {right, left, up, down, clear})
        middle->addWidget(b);
    middle->addStretch();
    grid->addLayout(middle, 0, 1);
    auto *rightColumn = new QVBoxLayout;
    rightColumn->addWidget(listLabel);
    rightColumn->addWidget(m_list, 1);
    rightColumn->addWidget(note);
    grid->addLayout(rightColumn, 0, 2);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    buttons->addWidget(help);
    grid->addLayout(buttons, 1, 0, 1, 3);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);

    connect(right, &QPushButton::clicked, this, &SetFoldr1::addFolder);
    connect(left, &QPushButton::clicked, this, &SetFoldr1::removeFolder);
    connect(up, &QPushButton::clicked, this, &SetFoldr1::moveUp);
    connect(down, &QPushButton::clicked, this, &SetFoldr1::moveDown);
    connect(clear, &QPushButton::clicked, this, &SetFoldr1::clearList);
    connect(ok, &QPushButton::clicked, this, [this] {
        if (save())
            accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, &SetFoldr1::helpRequested);
    connect(m_drive, &QComboBox::activated, this, [this](int i) { setDrive(m_drive->itemText(i)); });
    connect(m_dir, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        setCurrentFolder(m_dirModel->filePath(index));
    });
    connect(m_filter, &QComboBox::activated, this, &SetFoldr1::setPattern);

    // The browser's list as it stands; its lines are kept exactly.
    m_list->addItems(m_state.workingFolders);
    // The file box starts on all picture files, the filter box with them.
    m_filter->setCurrentIndex(32);
    m_pattern = settings::allPicturesPattern();
    const QString start = QFileInfo(startFolder).isDir() ? startFolder : QDir::homePath();
    setCurrentFolder(start);

    installWindowColors(this, m_state);
}

QString SetFoldr1::currentFolder() const
{
    return m_folder;
}

void SetFoldr1::setCurrentFolder(const QString &path)
{
    m_folder = QDir::cleanPath(QDir(path).absolutePath());
    const QString root = QStorageInfo(m_folder).rootPath();
    const QString driveRoot = root.isEmpty() ? QDir::rootPath() : root;
    if (m_dirModel->rootPath() != driveRoot) {
        m_dirModel->setRootPath(driveRoot);
        m_dir->setRootIndex(m_dirModel->index(driveRoot));
    }
    const int d = m_drive->findText(driveRoot);
    if (d >= 0)
        m_drive->setCurrentIndex(d);
    const QModelIndex index = m_dirModel->index(m_folder);
    if (index.isValid()) {
        m_dir->setCurrentIndex(index);
        m_dir->scrollTo(index);
    }
    refreshFiles();
}

void SetFoldr1::setDrive(const QString &root)
{
    setCurrentFolder(root);
}

void SetFoldr1::setPattern(int filterIndex)
{
    if (filterIndex < 0 || filterIndex >= settings::FolderPatternCount)
        return;
    m_pattern = settings::folderPatternTable()[filterIndex];
    refreshFiles();
}

void SetFoldr1::refreshFiles()
{
    m_files->clear();
    const catalogue::WildcardFilter filter(m_pattern);
    QDirIterator it(m_folder, QDir::Files | QDir::Hidden);
    int listed = 0;
    QStringList names;
    while (it.hasNext() && listed < MaxListedFiles) {
        it.next();
        if (filter.matches(it.fileName())) {
            names << it.fileName();
            ++listed;
        }
    }
    names.sort(Qt::CaseInsensitive);
    m_files->addItems(names);
}

QStringList SetFoldr1::listLines() const
{
    QStringList lines;
    for (int i = 0; i < m_list->count(); ++i)
        lines << m_list->item(i)->text();
    return lines;
}

void SetFoldr1::addFolder()
{
    m_list->addItem(settings::workingFolderLine(m_folder, m_filter->currentIndex()));
}

void SetFoldr1::removeFolder()
{
    const int row = m_list->currentRow();
    if (row >= 0)
        delete m_list->takeItem(row);
}

void SetFoldr1::moveUp()
{
    const int row = m_list->currentRow();
    if (row <= 0)
        return;
    m_list->insertItem(row - 1, m_list->takeItem(row));
    m_list->setCurrentRow(row - 1);
}

void SetFoldr1::moveDown()
{
    const int row = m_list->currentRow();
    if (row < 0 || row >= m_list->count() - 1)
        return;
    m_list->insertItem(row + 1, m_list->takeItem(row));
    m_list->setCurrentRow(row + 1);
}

void SetFoldr1::clearList()
{
    m_list->clear();
}

bool SetFoldr1::save()
{
    QString error;
    if (!settings::writeWorkingFolders(m_state.programFolder, listLines(), &error)) {
        m_services.messages.inform(error, this);
        return false;
    }
    m_state.workingFolders = listLines();
    emit foldersSaved();
    return true;
}

} // namespace tarnby::ui
