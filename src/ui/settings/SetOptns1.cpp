#include "ui/settings/SetOptns1.h"

#include "ui/services/DialogButtons.h"

#include "core/app/AppState.h"
#include "core/settings/MailPasswords.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <cmath>
#include <memory>

namespace tarnby::ui {

using settings::OptionBounds;

namespace {

QLineEdit *textBox(QWidget *parent, int index, const QString &tooltip = {})
{
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(QStringLiteral("Text1_%1").arg(index));
    if (!tooltip.isEmpty())
        edit->setToolTip(tooltip);
    return edit;
}

// A number as the user typed it, "." as the decimal point.
bool numberIn(const QLineEdit *field, double minimum, double maximum, double *value)
{
    bool ok = false;
    const double v = QLocale::c().toDouble(field->text().trimmed(), &ok);
    if (!ok || !std::isfinite(v) || v < minimum || v > maximum)
        return false;
    *value = v;
    return true;
}

QString number(double v)
{
    return QLocale::c().toString(v, 'g', 15);
}

QComboBox *choiceBox(QWidget *parent, const QString &name, const QStringList &items)
{
    auto *box = new QComboBox(parent);
    box->setObjectName(name);
    box->addItems(items);
    return box;
}

QSpinBox *portBox(QWidget *parent, const QString &name)
{
    auto *box = new QSpinBox(parent);
    box->setObjectName(name);
    box->setRange(1, 65535);
    return box;
}

} // namespace

SetOptns1::SetOptns1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_edit(state.options)
{
    setObjectName(QStringLiteral("SetOptns1"));
    setWindowTitle(QStringLiteral("Set Tarnby Control Options"));
    setAttribute(Qt::WA_DeleteOnClose, false);

    auto *layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("TabStrip1"));
    layout->addWidget(m_tabs);

    // General look.
    m_generalTab = new QWidget(m_tabs);
    m_generalTab->setObjectName(QStringLiteral("TabGeneral"));
    {
        auto *v = new QVBoxLayout(m_generalTab);
        m_useTextDoc = new QCheckBox(QStringLiteral("Use Text File Format for HTML,Word Docments"), m_generalTab);
        m_useTextDoc->setObjectName(QStringLiteral("CHKUSETEXTDOC"));
        m_useTextDoc->setToolTip(m_useTextDoc->text());
        v->addWidget(m_useTextDoc);

        auto *menuFrame = new QGroupBox(QStringLiteral("Menu Text"), m_generalTab);
        menuFrame->setObjectName(QStringLiteral("FrameMenu"));
        auto *mv = new QVBoxLayout(menuFrame);
        const char *const captions[5][2] = {
            {"Flat", "Use Flat Text on Menus"},
            {"Light Raised", "Use Light Raised Text on Menus"},
            {"Heavy Inset", "Use Heavy Inset Text on Menus"},
            {"Light Inset", "Use Light Inset Text on Menus"},
            {"Heavy Raised", "Use Heavy Raised Text on Menus"},
        };
        for (int i = 0; i < 5; ++i) {
            m_menuStyle[i] = new QRadioButton(QLatin1String(captions[i][0]), menuFrame);
            m_menuStyle[i]->setObjectName(QStringLiteral("RDMENU_%1").arg(i));
            m_menuStyle[i]->setToolTip(QLatin1String(captions[i][1]));
            mv->addWidget(m_menuStyle[i]);
        }
        v->addWidget(menuFrame);

        m_bold = new QCheckBox(QStringLiteral("Use Bold Type"), m_generalTab);
        m_bold->setObjectName(QStringLiteral("CHKBOLDTYPE"));
        m_bold->setToolTip(QStringLiteral("Use Bold Type on all Windows"));
        v->addWidget(m_bold);
        m_grid = new QCheckBox(QStringLiteral("Use Grid Lines"), m_generalTab);
        m_grid->setObjectName(QStringLiteral("CHKGRIDLINE"));
        m_grid->setToolTip(QStringLiteral("Show Grid Lines on Folder/File Explorer List"));
        v->addWidget(m_grid);

        auto *form = new QFormLayout;
        m_text[6] = textBox(m_generalTab, 6,
                            QStringLiteral("Percent of Main Window Device/Folder Selector Tree Occupies"));
        form->addRow(QStringLiteral("Separator Position:"), m_text[6]);
        v->addLayout(form);
        v->addStretch();
    }
    m_tabs->addTab(m_generalTab, QStringLiteral("General"));

    // Thumbnails.
    m_thumbTab = new QWidget(m_tabs);
    m_thumbTab->setObjectName(QStringLiteral("TabThumbNails"));
    {
        auto *form = new QFormLayout(m_thumbTab);
        m_thumbBits = choiceBox(m_thumbTab, QStringLiteral("CMBTHUMBRES"), settings::thumbnailBitsChoices());
        m_thumbBits->setToolTip(QStringLiteral("Bits per Bitmap on ThumbNail"));
        form->addRow(QStringLiteral("Bits per Bitmap on ThumbNail"), m_thumbBits);
        m_text[0] = textBox(m_thumbTab, 0, QStringLiteral("ThumbNail Height in Centimeters"));
        form->addRow(QStringLiteral("ThumbNail Height in Centimeters"), m_text[0]);
        m_text[1] = textBox(m_thumbTab, 1, QStringLiteral("ThumbNail Width in Centimeters"));
        form->addRow(QStringLiteral("ThumbNail Width in Centimeters"), m_text[1]);
    }
    m_tabs->addTab(m_thumbTab, QStringLiteral("ThumbNails"));

    // Search.
    m_searchTab = new QWidget(m_tabs);
    m_searchTab->setObjectName(QStringLiteral("TabSearch"));
    {
        auto *form = new QFormLayout(m_searchTab);
        m_text[4] = textBox(m_searchTab, 4);
        form->addRow(QStringLiteral("Initial Number of Folders and Files to Search:"), m_text[4]);
        m_text[5] = textBox(m_searchTab, 5);
        form->addRow(QStringLiteral("Additional Number of Folders and Files to Search:"), m_text[5]);
    }
    m_tabs->addTab(m_searchTab, QStringLiteral("Search"));

    // Table browser.
    m_tableTab = new QWidget(m_tabs);
    m_tableTab->setObjectName(QStringLiteral("TabTableBrowser"));
    {
        auto *v = new QVBoxLayout(m_tableTab);
        auto *typeFrame = new QGroupBox(QStringLiteral("Table Browser Text"), m_tableTab);
        typeFrame->setObjectName(QStringLiteral("FrameBrowType"));
        auto *tv = new QVBoxLayout(typeFrame);
        const char *const captions[3][2] = {
            {"Inset Browser Text", "Use Inset 3-D Text on all Table Browsers"},
            {"Raised Text", "Use Raised 3-D Text on all Table Browsers"},
            {"Flat Browser Text", "Use Flat 2-D Text on Table Browsers"},
        };
        for (int i = 0; i < 3; ++i) {
            m_browseType[i] = new QRadioButton(QLatin1String(captions[i][0]), typeFrame);
            m_browseType[i]->setObjectName(QStringLiteral("RDBROWTYPE_%1").arg(i));
            m_browseType[i]->setToolTip(QLatin1String(captions[i][1]));
            tv->addWidget(m_browseType[i]);
        }
        v->addWidget(typeFrame);
        auto *label = new QLabel(QStringLiteral("Set Browser Grid Height:"), m_tableTab);
        v->addWidget(label);
        m_rowHeight = new QSlider(Qt::Horizontal, m_tableTab);
        m_rowHeight->setObjectName(QStringLiteral("Slider1"));
        m_rowHeight->setRange(OptionBounds::RowHeightMin, OptionBounds::RowHeightMax);
        m_rowHeight->setTickPosition(QSlider::TicksBelow);
        m_rowHeight->setTickInterval(50);
        m_rowHeight->setToolTip(QStringLiteral("Select a number between 250 and 600 to set the Table Row Height"));
        v->addWidget(m_rowHeight);
        v->addStretch();
    }
    m_tabs->addTab(m_tableTab, QStringLiteral("Table Browser"));

    // E-mail.
    m_mailTab = new QWidget(m_tabs);
    m_mailTab->setObjectName(QStringLiteral("TabEMail"));
    {
        auto *v = new QVBoxLayout(m_mailTab);
        auto *form = new QFormLayout;
        const QString toTip = QStringLiteral("Enter a frequently used To E-Mail Address for sending files");
        m_text[7] = textBox(m_mailTab, 7, toTip);
        m_text[8] = textBox(m_mailTab, 8, toTip);
        m_text[9] = textBox(m_mailTab, 9, toTip);
        form->addRow(QStringLiteral("To E-Mail Addresses:"), m_text[7]);
        form->addRow(QString(), m_text[8]);
        form->addRow(QString(), m_text[9]);
        m_text[3] = textBox(m_mailTab, 3, QStringLiteral("Enter Your From E-Mail Address"));
        form->addRow(QStringLiteral("From E-Mail Address"), m_text[3]);
        m_text[2] = textBox(m_mailTab, 2, QStringLiteral("Enter Web Site Address available when Browser Started"));
        form->addRow(QStringLiteral("Web Site Address"), m_text[2]);

        auto *bookRow = new QHBoxLayout;
        m_addressBook = new QLineEdit(m_mailTab);
        m_addressBook->setObjectName(QStringLiteral("TxtAddressBook"));
        m_addressBook->setReadOnly(true);
        auto *bookButton = new QPushButton(QStringLiteral("..."), m_mailTab);
        bookButton->setObjectName(QStringLiteral("EMailBKBtn"));
        bookButton->setToolTip(QStringLiteral("Locate E-Mail Address Book"));
        bookRow->addWidget(m_addressBook, 1);
        bookRow->addWidget(bookButton);
        form->addRow(QStringLiteral("E-Mail Address Book"), bookRow);
        connect(bookButton, &QPushButton::clicked, this, &SetOptns1::chooseAddressBook);
        v->addLayout(form);

        const QStringList security = {QStringLiteral("STARTTLS"), QStringLiteral("TLS"), QStringLiteral("None")};
        auto *out = new QGroupBox(QStringLiteral("Sending (SMTP)"), m_mailTab);
        out->setObjectName(QStringLiteral("FrameSmtp"));
        auto *of = new QFormLayout(out);
        m_smtpHost = new QLineEdit(out);
        m_smtpHost->setObjectName(QStringLiteral("TxtSmtpHost"));
        m_smtpPort = portBox(out, QStringLiteral("TxtSmtpPort"));
        m_smtpSecurity = choiceBox(out, QStringLiteral("CMBSMTPSECURITY"), security);
        m_smtpUser = new QLineEdit(out);
        m_smtpUser->setObjectName(QStringLiteral("TxtSmtpUser"));
        m_smtpPassword = new QLineEdit(out);
        m_smtpPassword->setObjectName(QStringLiteral("TxtSmtpPassword"));
        m_smtpPassword->setEchoMode(QLineEdit::Password);
        of->addRow(QStringLiteral("Server:"), m_smtpHost);
        of->addRow(QStringLiteral("Port:"), m_smtpPort);
        of->addRow(QStringLiteral("Security:"), m_smtpSecurity);
        of->addRow(QStringLiteral("User:"), m_smtpUser);
        of->addRow(QStringLiteral("Password:"), m_smtpPassword);
        v->addWidget(out);

        auto *in = new QGroupBox(QStringLiteral("Receiving (IMAP or POP3)"), m_mailTab);
        in->setObjectName(QStringLiteral("FrameIncoming"));
        auto *inf = new QFormLayout(in);
        m_inProtocol = choiceBox(in, QStringLiteral("CMBINPROTOCOL"), {QStringLiteral("IMAP"), QStringLiteral("POP3")});
        m_inHost = new QLineEdit(in);
        m_inHost->setObjectName(QStringLiteral("TxtInHost"));
        m_inPort = portBox(in, QStringLiteral("TxtInPort"));
        m_inSecurity = choiceBox(in, QStringLiteral("CMBINSECURITY"), security);
        m_inUser = new QLineEdit(in);
        m_inUser->setObjectName(QStringLiteral("TxtInUser"));
        m_inPassword = new QLineEdit(in);
        m_inPassword->setObjectName(QStringLiteral("TxtInPassword"));
        m_inPassword->setEchoMode(QLineEdit::Password);
        inf->addRow(QStringLiteral("Protocol:"), m_inProtocol);
        inf->addRow(QStringLiteral("Server:"), m_inHost);
        inf->addRow(QStringLiteral("Port:"), m_inPort);
        inf->addRow(QStringLiteral("Security:"), m_inSecurity);
        inf->addRow(QStringLiteral("User:"), m_inUser);
        inf->addRow(QStringLiteral("Password:"), m_inPassword);
        v->addWidget(in);

        m_keyringLabel = new QLabel(m_mailTab);
        m_keyringLabel->setObjectName(QStringLiteral("LblKeyring"));
        m_keyringLabel->setWordWrap(true);
        v->addWidget(m_keyringLabel);
    }
    m_tabs->addTab(m_mailTab, QStringLiteral("E-Mail"));

    const DialogButtons buttons = makeDialogButtons(this);
    QPushButton *ok = buttons.ok;
    QPushButton *cancel = buttons.cancel;
    QPushButton *help = buttons.help;
    layout->addLayout(buttons.row);
    connect(ok, &QPushButton::clicked, this, [this] {
        if (store())
            accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, &SetOptns1::helpRequested);

    fill();
    installWindowColors(this, m_state);
    loadPasswords();
}

void SetOptns1::fill()
{
    const settings::ProgramOptions &o = m_edit;
    m_useTextDoc->setChecked(o.useTextDoc);
    m_menuStyle[std::clamp<int>(o.menuTextStyle, 0, 4)]->setChecked(true);
    m_bold->setChecked(o.boldType);
    m_grid->setChecked(o.gridLines);
    m_text[6]->setText(QString::number(o.separatorPercent));

    const int letter = QStringLiteral("IRF").indexOf(o.browserTextStyle);
    m_browseType[letter < 0 ? 2 : letter]->setChecked(true);
    m_rowHeight->setValue(o.tableRowHeight);

    const int bits = m_thumbBits->findText(o.thumbnailBits);
    m_thumbBits->setCurrentIndex(bits < 0 ? 1 : bits);
    m_text[0]->setText(number(o.thumbnailHeightCm));
    m_text[1]->setText(number(o.thumbnailWidthCm));

    m_text[4]->setText(QString::number(o.initialSearchCount));
    m_text[5]->setText(QString::number(o.nextSearchCount));

    m_text[7]->setText(o.toAddress1);
    m_text[8]->setText(o.toAddress2);
    m_text[9]->setText(o.toAddress3);
    m_text[3]->setText(o.fromAddress);
    m_text[2]->setText(o.webSiteAddress);
    m_addressBook->setText(o.addressBook);

    m_smtpHost->setText(o.smtpHost);
    m_smtpPort->setValue(o.smtpPort);
    m_smtpSecurity->setCurrentText(o.smtpSecurity);
    m_smtpUser->setText(o.smtpUser);
    m_inProtocol->setCurrentText(o.incomingProtocol);
    m_inHost->setText(o.incomingHost);
    m_inPort->setValue(o.incomingPort);
    m_inSecurity->setCurrentText(o.incomingSecurity);
    m_inUser->setText(o.incomingUser);
}

bool SetOptns1::refuse(const QString &message, QWidget *tab, QLineEdit *field)
{
    m_services.messages.inform(message, this);
    m_tabs->setCurrentWidget(tab);
    field->setFocus(Qt::OtherFocusReason);
    field->selectAll();
    return false;
}

bool SetOptns1::store()
{
    double height = 0, width = 0, separator = 0, initial = 0, next = 0;
    if (!numberIn(m_text[0], OptionBounds::ThumbnailMin, OptionBounds::ThumbnailMax, &height))
        return refuse(QStringLiteral("Invalid Sizes for ThumbNail Images"), m_thumbTab, m_text[0]);
    if (!numberIn(m_text[1], OptionBounds::ThumbnailMin, OptionBounds::ThumbnailMax, &width))
        return refuse(QStringLiteral("Invalid Sizes for ThumbNail Images"), m_thumbTab, m_text[1]);
    if (!numberIn(m_text[6], OptionBounds::SeparatorMin, OptionBounds::SeparatorMax, &separator))
        return refuse(QStringLiteral("Enter a Percentage between 20 and 80"), m_generalTab, m_text[6]);
    if (!numberIn(m_text[4], OptionBounds::InitialSearchMin, OptionBounds::InitialSearchMax, &initial))
        return refuse(QStringLiteral("Enter Initial Number of Files to Search between 2,500 and 10,000"), m_searchTab,
                      m_text[4]);
    if (!numberIn(m_text[5], OptionBounds::NextSearchMin, OptionBounds::NextSearchMax, &next))
        return refuse(QStringLiteral("Enter Next Number of Files to Search between 500 and 2500"), m_searchTab,
                      m_text[5]);

    // Start from the shared options as they are now, so that the lines this
    // window does not show keep whatever their own windows last stored.
    settings::ProgramOptions o = m_state.options;
    o.thumbnailHeightCm = height;
    o.thumbnailWidthCm = width;
    o.thumbnailBits = m_thumbBits->currentText();
    o.separatorPercent = qint32(std::lround(separator));
    o.initialSearchCount = qint32(std::lround(initial));
    o.nextSearchCount = qint32(std::lround(next));
    o.useTextDoc = m_useTextDoc->isChecked();
    for (int i = 0; i < 5; ++i) {
        if (m_menuStyle[i]->isChecked())
            o.menuTextStyle = qint16(i);
    }
    for (int i = 0; i < 3; ++i) {
        if (m_browseType[i]->isChecked())
            o.browserTextStyle = QStringLiteral("IRF").mid(i, 1);
    }
    o.tableRowHeight = qint16(m_rowHeight->value());
    o.boldType = m_bold->isChecked();
    o.gridLines = m_grid->isChecked();
    o.fromAddress = m_text[3]->text();
    o.webSiteAddress = m_text[2]->text();
    o.toAddress1 = m_text[7]->text();
    o.toAddress2 = m_text[8]->text();
    o.toAddress3 = m_text[9]->text();
    o.addressBook = m_addressBook->text();
    o.smtpHost = m_smtpHost->text().trimmed();
    o.smtpPort = m_smtpPort->value();
    o.smtpSecurity = m_smtpSecurity->currentText();
    o.smtpUser = m_smtpUser->text().trimmed();
    o.incomingProtocol = m_inProtocol->currentText();
    o.incomingHost = m_inHost->text().trimmed();
    o.incomingPort = m_inPort->value();
    o.incomingSecurity = m_inSecurity->currentText();
    o.incomingUser = m_inUser->text().trimmed();

    // The file is written before the shared options change, so that the
    // program never runs on options its file does not hold.
    QString error;
    if (!settings::writeProgramOptions(m_state.programFolder, o, &error)) {
        m_services.messages.inform(error, this);
        return false;
    }
    m_state.options = o;
    m_edit = o;
    savePasswords();
    return true;
}

void SetOptns1::chooseAddressBook()
{
    DialogRequest request;
    request.kind = DialogKind::OpenFile;
    request.title = QStringLiteral("Select E-Mail Address List to Open");
    request.fileName = QStringLiteral("MailAddr.MLS");
    request.defaultSuffix = QStringLiteral("MLS");
    request.filter = QStringLiteral("E-Mail Address List | *.MLS");
    const QFileInfo current(m_addressBook->text());
    request.directory = current.isAbsolute() ? current.absolutePath() : m_state.programFolder;
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (answer.accepted && !answer.path.isEmpty())
        m_addressBook->setText(answer.path);
}

void SetOptns1::loadPasswords()
{
    const settings::ProgramOptions &o = m_edit;
    struct Entry {
        QLineEdit *field;
        QString key;
    };
    std::vector<Entry> entries;
    if (!o.smtpUser.isEmpty() && !o.smtpHost.isEmpty())
        entries.push_back({m_smtpPassword, settings::mailPasswordKey(settings::MailServer::Outgoing, {}, o.smtpUser, o.smtpHost)});
    if (!o.incomingUser.isEmpty() && !o.incomingHost.isEmpty())
        entries.push_back({m_inPassword, settings::mailPasswordKey(settings::MailServer::Incoming, o.incomingProtocol,
                                                                   o.incomingUser, o.incomingHost)});
    m_keyringLabel->setText(QStringLiteral("Passwords are kept in the desktop keyring only."));
    for (const Entry &e : entries) {
        QPointer<QLineEdit> field = e.field;
        settings::MailPasswords::read(
            e.key, this,
            [this, field](const settings::PasswordResult &r) {
                if (!r.ok) {
                    m_keyringLabel->setText(r.error);
                    return;
                }
                // A password the user has begun to type wins over the stored one.
                if (field && !field->isModified())
                    field->setText(r.password);
            },
            m_keyringTimeoutMs);
    }
}

void SetOptns1::savePasswords()
{
    const settings::ProgramOptions &o = m_state.options;
    struct Job {
        QString key;
        QString password;
    };
    std::vector<Job> jobs;
    if (m_smtpPassword->isModified() && !o.smtpUser.isEmpty() && !o.smtpHost.isEmpty())
        jobs.push_back({settings::mailPasswordKey(settings::MailServer::Outgoing, {}, o.smtpUser, o.smtpHost),
                        m_smtpPassword->text()});
    if (m_inPassword->isModified() && !o.incomingUser.isEmpty() && !o.incomingHost.isEmpty())
        jobs.push_back({settings::mailPasswordKey(settings::MailServer::Incoming, o.incomingProtocol, o.incomingUser,
                                                  o.incomingHost),
                        m_inPassword->text()});
    if (jobs.empty()) {
        emit keyringFinished();
        return;
    }

    // The window closes on OK while the keyring may still be working: the
    // answers are handled by an object that lives on the window's parent (or
    // the application), and a failure is reported without the window.
    QObject *owner = parent() ? parent() : static_cast<QObject *>(QCoreApplication::instance());
    auto pending = std::make_shared<int>(int(jobs.size()));
    auto reported = std::make_shared<bool>(false);
    QPointer<SetOptns1> self = this;
    UiServices *services = &m_services;
    for (const Job &job : jobs) {
        auto done = [pending, reported, self, services](const settings::PasswordResult &r) {
            if (!r.ok && !*reported) {
                *reported = true;
                services->messages.inform(r.error);
            }
            if (--*pending == 0 && self)
                emit self->keyringFinished();
        };
        if (job.password.isEmpty())
            settings::MailPasswords::remove(job.key, owner, done, m_keyringTimeoutMs);
        else
            settings::MailPasswords::write(job.key, job.password, owner, done, m_keyringTimeoutMs);
    }
}

} // namespace tarnby::ui
