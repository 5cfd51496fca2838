#include "ui/mail/MailAddr1.h"

#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/mail/AddressList.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace tarnby::ui {

namespace {
int openCount = 0;
const char ContactsSection[] = "Mail";
const char ContactsKey[] = "ContactsFile";

QPushButton *button(QWidget *parent, const char *name, const QString &caption, const char *tooltip)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    b->setAutoDefault(false);
    return b;
}
} // namespace

MailAddr1::MailAddr1(AppState &state, UiServices &services, SettingsStore *store, const QString &mode, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_store(store)
    , m_mode(mode)
{
    setObjectName(QStringLiteral("MailAddr1"));
    setWindowTitle(QStringLiteral("E-Mail Names and Addresses"));

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("List1"));
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("Text1_0"));
    m_name->setToolTip(QStringLiteral("Enter the name of the person or organization with email address"));
    m_address = new QLineEdit(this);
    m_address->setObjectName(QStringLiteral("Text1_1"));
    m_address->setToolTip(QStringLiteral("Enter the email address"));

    auto *add = button(this, "AddBtn", QStringLiteral("Add"), "Add Name and e-mail address to list");
    auto *del = button(this, "DeleteBtn", QStringLiteral("Delete"), "Delete Name and e-mail address from list");
    auto *save = button(this, "SaveBtn", QStringLiteral("Save"), "Close the Name and email address list");
    auto *select = button(this, "SelectBtn", QStringLiteral("Select"), "Select address and Close the Name and email address list");
    auto *cancel = button(this, "CancelBtn", QStringLiteral("Cancel"), "Close the Name and email address list");
    auto *help = button(this, "HelpBtn", QStringLiteral("Help"), "Help with the Name and email address list");
    auto *contacts = button(this, "OutLkBtn", QString(), "Get Outlook Express or E-Mail Service Address Book");
    contacts->setIcon(QIcon::fromTheme(QStringLiteral("x-office-address-book")));
    if (contacts->icon().isNull())
        contacts->setText(QStringLiteral("..."));

    auto *layout = new QGridLayout(this);
    layout->addWidget(m_list, 0, 0, 1, 3);
    layout->addWidget(new QLabel(QStringLiteral("Name"), this), 1, 0);
    layout->addWidget(m_name, 1, 1);
    layout->addWidget(contacts, 1, 2);
    layout->addWidget(new QLabel(QStringLiteral("E-Mail Address"), this), 2, 0);
    layout->addWidget(m_address, 2, 1, 1, 2);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {add, del, save, select, cancel, help})
        buttons->addWidget(b);
    layout->addLayout(buttons, 3, 0, 1, 3);

    connect(add, &QPushButton::clicked, this, &MailAddr1::addEntry);
    connect(del, &QPushButton::clicked, this, &MailAddr1::deleteEntry);
    connect(save, &QPushButton::clicked, this, [this] { writeList(); });
    connect(select, &QPushButton::clicked, this, &MailAddr1::selectEntry);
    connect(cancel, &QPushButton::clicked, this, &MailAddr1::close);
    connect(help, &QPushButton::clicked, this, &MailAddr1::helpRequested);
    connect(contacts, &QPushButton::clicked, this, &MailAddr1::takeFromContacts);
    connect(m_list, &QListWidget::currentRowChanged, this, &MailAddr1::entryClicked);
    connect(m_name, &QLineEdit::textEdited, this, &MailAddr1::boxEdited);
    connect(m_address, &QLineEdit::textEdited, this, &MailAddr1::boxEdited);

    installWindowColors(this, m_state);
    ++openCount;
    if (m_mode == QLatin1String("O") && chooseListFile(false)) {
        readList();
        if (m_list->count() > 0)
            m_list->setCurrentRow(0);
    }
    m_changed = false;
}

MailAddr1::~MailAddr1()
{
    --openCount;
}

bool MailAddr1::isOpen()
{
    return openCount > 0;
}

QStringList MailAddr1::entries() const
{
    QStringList lines;
    for (int i = 0; i < m_list->count(); ++i)
        lines << m_list->item(i)->text();
    return lines;
}

bool MailAddr1::chooseListFile(bool save)
{
    DialogRequest request;
    request.kind = save ? DialogKind::SaveFile : DialogKind::OpenFile;
    request.defaultSuffix = QStringLiteral("MLS");
    request.filter = QStringLiteral("Address List | *.MLS");
    request.confirmOverwrite = true;
    const QString configured = m_state.options.addressBook.isEmpty() ? mail::DefaultAddressListName
                                                                     : m_state.options.addressBook;
    if (configured == mail::DefaultAddressListName || QFileInfo(configured).isRelative()) {
        request.directory = m_state.programFolder;
        request.fileName = m_state.programFile(configured);
    } else {
        request.directory = QFileInfo(configured).absolutePath();
        request.fileName = configured;
    }
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted || answer.path.trimmed().isEmpty())
        return false;
    m_listFile = answer.path.trimmed();
    setWindowTitle(QStringLiteral("E-Mail Names and Addresses from - ") + QFileInfo(m_listFile).fileName());
    return true;
}

void MailAddr1::readList()
{
    // Reading stops quietly at what cannot be read; what was read stays.
    for (const QString &line : mail::readAddressList(m_listFile).lines)
        m_list->addItem(line);
}

bool MailAddr1::writeList()
{
    m_mode = QStringLiteral("S");
    if (!chooseListFile(true))
        return false;
    QString error;
    if (!mail::writeAddressList(m_listFile, entries(), &error)) {
        m_services.messages.inform(error, this);
        return false;
    }
    m_changed = false;
    return true;
}

void MailAddr1::addEntry()
{
    if (m_name->text().isEmpty() || m_address->text().isEmpty())
        return;
    m_list->addItem(mail::addressLine(m_name->text(), m_address->text()));
    m_changed = true;
}

void MailAddr1::deleteEntry()
{
    const int row = m_list->currentRow();
    if (row < 0)
        return;
    delete m_list->takeItem(row);
    m_changed = true;
}

void MailAddr1::selectEntry()
{
    const int row = m_list->currentRow();
    if (m_list->count() == 0 || row < 0)
        return;
    const mail::AddressEntry entry = mail::splitAddressLine(m_list->item(row)->text());
    emit entrySelected(entry.address, entry.name);
}

void MailAddr1::entryClicked(int row)
{
    if (row < 0 || row >= m_list->count())
        return;
    const mail::AddressEntry entry = mail::splitAddressLine(m_list->item(row)->text());
    m_filling = true;
    m_name->setText(entry.name);
    m_address->setText(entry.address);
    m_filling = false;
}

void MailAddr1::boxEdited()
{
    const int row = m_list->currentRow();
    if (m_filling || row < 0 || m_name->text().isEmpty() || m_address->text().isEmpty())
        return;
    m_list->item(row)->setText(mail::addressLine(m_name->text(), m_address->text()));
    m_changed = true;
}

void MailAddr1::takeFromContacts()
{
    // The desktop's address book is a vCard file that the user exports from
    // any mail program; the choice is remembered for next time.
    const QString remembered =
        m_store ? m_store->value(QLatin1String(ContactsSection), QLatin1String(ContactsKey)).toString() : QString();
    QString path = remembered;
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        DialogRequest request;
        request.kind = DialogKind::OpenFile;
        request.title = QStringLiteral("Select Address Book (vCard) File");
        request.filter = QStringLiteral("vCard Address Book|*.vcf;*.vcard|All Files|*");
        request.directory = remembered.isEmpty() ? QDir::homePath() : QFileInfo(remembered).absolutePath();
        const DialogAnswer answer = m_services.dialogs.run(request, this);
        if (!answer.accepted || answer.path.isEmpty())
            return;
        path = answer.path;
        if (m_store)
            m_store->setValue(QLatin1String(ContactsSection), QLatin1String(ContactsKey), path);
    }
    const QList<mail::AddressEntry> contacts = mail::readVCardContacts(path);
    if (contacts.isEmpty()) {
        m_services.messages.inform(QStringLiteral("No names with e-mail addresses were found in - ") + path, this);
        return;
    }
    QStringList names;
    for (const mail::AddressEntry &c : contacts)
        names << mail::addressLine(c.name, c.address);
    DialogRequest choice;
    choice.kind = DialogKind::Choice;
    choice.title = windowTitle();
    choice.label = QStringLiteral("Name");
    choice.items = names;
    const DialogAnswer chosen = m_services.dialogs.run(choice, this);
    if (!chosen.accepted || chosen.index < 0 || chosen.index >= contacts.size())
        return;
    const mail::AddressEntry entry = contacts.at(chosen.index);
    m_name->setText(entry.name);
    m_address->setText(entry.address);
}

void MailAddr1::reject()
{
    close();
}

void MailAddr1::closeEvent(QCloseEvent *event)
{
    if (m_changed) {
        MessageRequest question{MessageService::defaultTitle(), QStringLiteral("Do you want to Save E-Mail Addresses ?"),
                                MessageButtons::YesNo, true};
        if (m_services.messages.show(question, this) == MessageAnswer::Yes)
            writeList();
        m_changed = false;
    }
    event->accept();
    QDialog::reject();
}

} // namespace tarnby::ui
