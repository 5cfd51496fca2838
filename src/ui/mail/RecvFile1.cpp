#include "ui/mail/RecvFile1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/mail/MailJobs.h"
#include "core/settings/MailPasswords.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QtConcurrent>

namespace tarnby::ui {

namespace {
int openCount = 0;

QPushButton *button(QWidget *parent, const char *name, const char *tooltip, const char *icon)
{
    auto *b = new QPushButton(parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    b->setIcon(QIcon::fromTheme(QLatin1String(icon)));
    if (b->icon().isNull())
        b->setText(QLatin1String(tooltip));
    b->setAutoDefault(false);
    return b;
}

QLineEdit *box(QWidget *parent, const char *name, const char *tooltip = nullptr)
{
    auto *e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    if (tooltip)
        e->setToolTip(QLatin1String(tooltip));
    return e;
}

bool matchesPattern(const QString &fileName, const QString &pattern)
{
    for (const QString &wildcard : pattern.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QRegularExpression re(QRegularExpression::wildcardToRegularExpression(wildcard),
                                    QRegularExpression::CaseInsensitiveOption);
        if (re.match(fileName).hasMatch())
            return true;
    }
    return false;
}
} // namespace

QString RecvFile1::filePattern()
{
    // The two pieces are joined as they stand: "*.SGI*.IMG" is one pattern.
    return QStringLiteral("*.JPG;*.JPE;*.CMP;*.TIFF;*.TIF;*.MPT;*.BMP;*.ICO;*.CUR;*.PCX;*.DCX;*.PCD;*.FPX;*.AWD;*.WMF;"
                          "*.EMF;*.DXF;*.XPM;*.IFF;*.PBM;*.CUT;*.PSD;*.PNG;*.TGA;*.EPS;*.JBG;*.RAS;*.PCT;*.CLP;*.SGI")
           + QStringLiteral("*.IMG;*.MSP;*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;"
                            "*.HTM;*.HTML;*.URL;*.MSG;*.WAV;*.MID;*.RMI;*.MP3;*.M3U;*.MPG;*.DBF;*.DB;*.MDB;*.XLS;*.WK4");
}

bool RecvFile1::isOpen()
{
    return openCount > 0;
}

RecvFile1::RecvFile1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("RecvFile1"));
    setWindowTitle(QStringLiteral("Receive E-Mail with File Attachments"));

    m_from = box(this, "TxtRecdFrom");
    m_date = new QLabel(this);
    m_date->setObjectName(QStringLiteral("LblDate"));
    m_subject = box(this, "TxtSubject");
    m_text = new QPlainTextEdit(this);
    m_text->setObjectName(QStringLiteral("TxtMessage"));
    m_status = new QLabel(QStringLiteral("- Status -"), this);
    m_status->setObjectName(QStringLiteral("Label2"));
    m_zipFile = box(this, "TxtZipFile", "Name and Location of attached File");
    m_zipTo = box(this, "TxtZipTo", "Unzip attached File to this Folder");
    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(QStringLiteral("Pictures Sent with Current E-Mail"));
    m_unread = new QRadioButton(QStringLiteral("UnRead"), this);
    m_unread->setObjectName(QStringLiteral("RDREAD_0"));
    m_unread->setToolTip(QStringLiteral("Set to Receive only UnRead Messages"));
    m_unread->setChecked(true);
    auto *all = new QRadioButton(QStringLiteral("All"), this);
    all->setObjectName(QStringLiteral("RDREAD_1"));
    all->setToolTip(QStringLiteral("Set to Receive Read and Unread Messages"));

    auto *recv = button(this, "RecvBtn", "Receive First Message", "mail-receive");
    auto *next = button(this, "RecvNextBtn", "Receive Next Message", "go-next");
    auto *replyButton = button(this, "ReplyBtn", "Reply to Message", "mail-reply-sender");
    auto *forwardButton = button(this, "ForwardBtn", "Forward Message with Picture or Package", "mail-forward");
    auto *addr = button(this, "AddrBtn", "Open and View Names and Addresses", "x-office-address-book");
    m_openButton = button(this, "OpenBtn", "Open Attached Zip File", "package-x-generic");
    auto *zipTo = button(this, "ZipToBtn", "Locate Zip File Destinantion", "folder-open");
    m_pictButton = button(this, "PictBtn", "Open Highlighted Picture File", "image-x-generic");
    auto *help = button(this, "HelpBtn", "Help with Receiving Pictures or Packages", "help-contents");
    m_openButton->setEnabled(false);
    m_pictButton->setEnabled(false);
    m_serverButtons = {recv, next, replyButton, forwardButton};

    auto *layout = new QGridLayout(this);
    int row = 0;
    auto labelled = [&](const char *label, QWidget *w) {
        layout->addWidget(new QLabel(QLatin1String(label), this), row, 0);
        layout->addWidget(w, row++, 1, 1, 3);
    };
    labelled("Sent From:", m_from);
    labelled("Message Date", m_date);
    labelled("Subject:", m_subject);
    labelled("Message:", m_text);
    layout->addWidget(m_status, row++, 0, 1, 4);
    labelled("Zip File:", m_zipFile);
    labelled("Open To:", m_zipTo);
    labelled("Pictures Received:", m_list);
    auto *choices = new QHBoxLayout;
    choices->addWidget(m_unread);
    choices->addWidget(all);
    choices->addStretch();
    layout->addLayout(choices, row++, 0, 1, 4);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {recv, next, replyButton, forwardButton, addr, m_openButton, zipTo, m_pictButton, help})
        buttons->addWidget(b);
    layout->addLayout(buttons, row, 0, 1, 4);

    connect(recv, &QPushButton::clicked, this, &RecvFile1::receiveFirst);
    connect(next, &QPushButton::clicked, this, &RecvFile1::receiveNext);
    connect(replyButton, &QPushButton::clicked, this, &RecvFile1::reply);
    connect(forwardButton, &QPushButton::clicked, this, &RecvFile1::forward);
    connect(addr, &QPushButton::clicked, this, &RecvFile1::addressBookRequested);
    connect(m_openButton, &QPushButton::clicked, this, &RecvFile1::unpack);
    connect(zipTo, &QPushButton::clicked, this, &RecvFile1::chooseZipTo);
    connect(m_pictButton, &QPushButton::clicked, this, &RecvFile1::openPicture);
    connect(help, &QPushButton::clicked, this, &RecvFile1::helpRequested);
    connect(&m_watcher, &QFutureWatcher<Shown>::finished, this, &RecvFile1::fetchDone);

    installWindowColors(this, m_state);
    const QString pictures = QDir(m_state.programFolder).filePath(QStringLiteral("Pictures"));
    QDir().mkpath(pictures);
    m_zipTo->setText(pictures);
    ++openCount;
}

RecvFile1::~RecvFile1()
{
    --openCount;
    m_cancel = true;
    m_watcher.disconnect(this);
    m_watcher.waitForFinished();
}

void RecvFile1::receiveFirst()
{
    showMessage(0);
}

void RecvFile1::receiveNext()
{
    showMessage(m_index + 1);
}

void RecvFile1::showMessage(int index)
{
    if (isBusy())
        return;
    m_index = index;
    for (QPushButton *b : std::as_const(m_serverButtons))
        b->setEnabled(false);
    const mailnet::ServerSettings server = mail::incomingServer(m_state.options);
    if (m_reader || server.user.isEmpty() || server.host.isEmpty()) {
        startFetch(index, QString());
        return;
    }
    settings::MailPasswords::read(mail::passwordKey(server, false), this, [this, index](const settings::PasswordResult &r) {
        if (!r.ok) {
            showFetched({false, {}, {}, r.error});
            return;
        }
        startFetch(index, r.password);
    });
}

void RecvFile1::startFetch(int index, const QString &password)
{
    if (!m_reader) {
        m_reader = std::make_shared<mailnet::MailReader>();
    }
    mailnet::ServerSettings server = mail::incomingServer(m_state.options);
    server.password = password;
    server.cancel = &m_cancel;
    server.seenFile = mail::seenFilePath(m_state.programFolder);
    const bool unreadOnly = m_unread->isChecked();
    const QString folder = m_zipTo->text();
    // The work does not own the reader: the task that ran it is deleted on
    // the worker thread some time after the result is reported, and the
    // reader (and its connection) must end on this thread, with this window.
    // The window waits for the work before it goes.
    mailnet::MailReader *reader = m_reader.get();
    m_watcher.setFuture(QtConcurrent::run([reader, server, index, unreadOnly, folder]() -> Shown {
        Shown shown;
        mailnet::MailError error;
        if (!reader->isConnected()) {
            if (server.host.isEmpty())
                return {false, {}, {}, QStringLiteral("No incoming mail server is set in the program options.")};
            error = reader->connect(server);
        }
        if (error.ok() && index == 0)
            error = reader->fetch(unreadOnly);
        if (!error.ok())
            return {false, {}, {}, error.text};
        if (reader->count() < 1 || index >= reader->count()) {
            shown.end = true;
            return shown;
        }
        error = reader->read(index, &shown.summary);
        if (error.ok() && !shown.summary.attachments.isEmpty()) {
            QDir().mkpath(folder);
            error = reader->saveAttachments(index, mail::attachmentFileCreator(folder), &shown.saved);
        }
        if (!error.ok())
            shown.error = error.text;
        return shown;
    }));
}

void RecvFile1::fetchDone()
{
    showFetched(m_watcher.result());
}

void RecvFile1::showFetched(const Shown &shown)
{
    for (QPushButton *b : std::as_const(m_serverButtons))
        b->setEnabled(true);
    if (!shown.error.isEmpty() && !shown.end && shown.summary.senderAddress.isEmpty()) {
        // Messaging failures leave the window as it is; the reason is shown
        // in the status line and the user may try again.
        m_status->setText(shown.error);
        m_status->setToolTip(shown.error);
        emit messageShown();
        return;
    }
    if (shown.end) {
        m_services.messages.inform(QStringLiteral("      End of E-Mail Messages"), this);
        m_index = 0;
        emit messageShown();
        return;
    }
    m_current = shown.summary;
    m_from->setText(shown.summary.senderName + QStringLiteral(" | ") + shown.summary.senderAddress);
    m_date->setText(QLocale::system().toString(shown.summary.date, QLocale::ShortFormat));
    m_subject->setText(shown.summary.subject);
    m_text->setPlainText(shown.summary.text);
    m_list->clear();
    m_status->setText(QStringLiteral("- Status -"));
    m_status->setToolTip(QString());
    m_zipFile->clear();
    m_openButton->setEnabled(false);
    m_pictButton->setEnabled(false);
    m_savedFiles.clear();
    for (const mailnet::SavedAttachment &a : shown.saved)
        m_savedFiles << a.path;
    if (!shown.saved.isEmpty()) {
        m_status->setText(QStringLiteral("- Attachments Present -"));
        const QString path = shown.saved.first().path;
        m_zipFile->setText(path);
        const QString extension = QFileInfo(path).suffix().toUpper();
        if (extension == QLatin1String("ZIP")) {
            m_openButton->setEnabled(true);
        } else if (catalogue::knownExtensionIndex(extension) >= 0) {
            m_list->addItem(path);
            m_pictButton->setEnabled(true);
        }
    }
    if (!shown.error.isEmpty())
        m_status->setText(shown.error);
    emit messageShown();
}

void RecvFile1::unpack()
{
    const QString destination = m_zipTo->text().trimmed();
    const QString zip = m_zipFile->text().trimmed();
    if (destination.size() < 4 || QFileInfo(zip).suffix().toUpper() != QLatin1String("ZIP"))
        return;
    const mail::UnpackResult result = mail::unpackReceivedArchive(zip, destination);
    if (!result.ok) {
        m_services.messages.inform(result.errorString, this);
        return;
    }
    // File1: every file of the folder that the all-types pattern lists.
    const QString pattern = filePattern();
    const QDir folder(destination);
    for (const QString &name : folder.entryList(QDir::Files, QDir::Name)) {
        if (matchesPattern(name, pattern))
            m_list->addItem(folder.filePath(name));
    }
    if (m_list->count() > 0)
        m_pictButton->setEnabled(true);
}

void RecvFile1::chooseZipTo()
{
    DialogRequest request;
    request.kind = DialogKind::OpenFile;
    request.title = QStringLiteral("Select Zip File Name and Location to UnZip");
    request.directory = m_zipTo->text();
    request.defaultSuffix = QStringLiteral("ZIP");
    request.filter = QStringLiteral("Zip File | *.Zip");
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (answer.accepted && !answer.path.trimmed().isEmpty())
        m_zipTo->setText(answer.path.trimmed());
}

void RecvFile1::openPicture()
{
    if (QListWidgetItem *item = m_list->currentItem())
        emit openFileRequested(item->text());
}

void RecvFile1::reply()
{
    if (!m_reader || m_current.senderAddress.isEmpty())
        return;
    QString quoted;
    for (const QString &line : m_current.text.split(QLatin1Char('\n')))
        quoted += QStringLiteral("> ") + line + QLatin1Char('\n');
    QString error;
    if (!mailnet::openComposer({m_current.senderAddress, QStringLiteral("Re: ") + m_current.subject, quoted, {}}, &error))
        m_services.messages.inform(error, this);
}

void RecvFile1::forward()
{
    if (!m_reader || m_current.senderAddress.isEmpty())
        return;
    QString error;
    if (!mailnet::openComposer({QString(), QStringLiteral("Fw: ") + m_current.subject, m_current.text, m_savedFiles}, &error))
        m_services.messages.inform(error, this);
}

} // namespace tarnby::ui
