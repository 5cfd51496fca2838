#include "ui/tools/GetURL1.h"

#include "core/app/AppState.h"
#include "core/tools/PictureList.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QStyle>

namespace tarnby::ui {

namespace {

QPushButton *pictureButton(QWidget *parent, const char *name, QStyle::StandardPixmap icon, const char *tooltip)
{
    auto *b = new QPushButton(parent->style()->standardIcon(icon), QString(), parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    b->setAccessibleName(QLatin1String(tooltip));
    b->setAutoDefault(false);
    return b;
}

} // namespace

GetURL1::GetURL1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("GetURL1"));
    setWindowTitle(QStringLiteral("Select Multimedia from the Internet"));
    // The window is drawn in a small font.
    QFont small = font();
    small.setPointSizeF(std::max(7.0, small.pointSizeF() - 1));
    setFont(small);

    m_view = new QListWidget(this);
    m_view->setObjectName(QStringLiteral("List1"));
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_text->setToolTip(QStringLiteral("Enter URL of Multimedia or Picture File to Display"));

    auto *ok = pictureButton(this, "OKBtn", QStyle::SP_DialogOkButton,
                             "Locate Picture or Multimedia File on the Internet");
    auto *remove = pictureButton(this, "DeleteBtn", QStyle::SP_TrashIcon,
                                 "Delete Multimedia or Picture File from the list");
    auto *up = pictureButton(this, "UpBtn", QStyle::SP_ArrowUp,
                             "Move Multimedia or Picture File Up one position on the list");
    auto *down = pictureButton(this, "DownBtn", QStyle::SP_ArrowDown,
                               "Move Multimedia or Picture File Down one position on the list");
    auto *exit = pictureButton(this, "ExitBtn", QStyle::SP_DialogCloseButton,
                               "Close Select Multimedia from Internet Window");
    auto *help = pictureButton(this, "HelpBtn", QStyle::SP_DialogHelpButton,
                               "Help with Select Multimedia from Internet Window");

    auto *grid = new QGridLayout(this);
    grid->addWidget(m_view, 0, 0, 5, 1);
    grid->addWidget(up, 0, 1);
    grid->addWidget(down, 1, 1);
    grid->addWidget(remove, 2, 1);
    grid->setRowStretch(3, 1);
    grid->addWidget(m_text, 5, 0);
    grid->addWidget(ok, 5, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(exit);
    buttons->addWidget(help);
    grid->addLayout(buttons, 6, 0, 1, 2);
    resize(520, 320);

    connect(ok, &QPushButton::clicked, this, &GetURL1::locate);
    connect(m_text, &QLineEdit::returnPressed, this, &GetURL1::locate);
    connect(remove, &QPushButton::clicked, this, &GetURL1::deleteEntry);
    connect(up, &QPushButton::clicked, this, &GetURL1::moveUp);
    connect(down, &QPushButton::clicked, this, &GetURL1::moveDown);
    connect(exit, &QPushButton::clicked, this, &QDialog::accept);
    connect(help, &QPushButton::clicked, this, &GetURL1::helpRequested);
    connect(m_view, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0 && row < m_list.size())
            m_text->setText(m_list.at(row));
    });

    installWindowColors(this, m_state);
    m_list = tools::readPictureList(m_state.programFolder);
    refresh(m_list.isEmpty() ? -1 : 0);
    m_state.internetListOpen = true;
}

GetURL1::~GetURL1()
{
    // A window destroyed without closing still keeps its list.
    saveList(parentWidget());
}

int GetURL1::selectedRow() const
{
    return m_view->currentRow();
}

void GetURL1::refresh(int selectRow)
{
    const QSignalBlocker block(m_view);
    m_view->clear();
    m_view->addItems(m_list);
    m_view->setCurrentRow(selectRow);
    if (selectRow >= 0 && selectRow < m_list.size())
        m_text->setText(m_list.at(selectRow));
}

void GetURL1::locate()
{
    const QString address = m_text->text().trimmed();
    if (address.isEmpty())
        return;
    m_state.currentFile = address;
    emit displayRequested(address);
    if (tools::addAddress(m_list, address))
        refresh(int(m_list.size()) - 1);
}

void GetURL1::deleteEntry()
{
    const int row = selectedRow();
    if (row < 0 || row >= m_list.size())
        return;
    m_list.removeAt(row);
    refresh(std::min(row, int(m_list.size()) - 1));
}

void GetURL1::moveUp()
{
    refresh(tools::moveUp(m_list, selectedRow()));
}

void GetURL1::moveDown()
{
    refresh(tools::moveDown(m_list, selectedRow()));
}

void GetURL1::saveList(QWidget *messageParent)
{
    if (m_saved)
        return;
    m_saved = true;
    QString error;
    if (!tools::writePictureList(m_state.programFolder, m_list, &error))
        m_services.messages.inform(error, messageParent);
    m_state.internetListOpen = false;
}

void GetURL1::done(int result)
{
    saveList(this);
    QDialog::done(result);
}

GetURL1 *showInternetList(AppState &state, UiServices &services, QWidget *parent, bool *created)
{
    static QPointer<GetURL1> open;
    *created = !open;
    if (!open) {
        open = new GetURL1(state, services, parent);
        open->setAttribute(Qt::WA_DeleteOnClose);
    }
    open->show();
    open->raise();
    open->activateWindow();
    return open;
}

} // namespace tarnby::ui
