#include "ui/mail/SendFile1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/mail/AddressList.h"
#include "core/mail/SendArchive.h"
#include "core/settings/MailPasswords.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QtConcurrent>

namespace tarnby::ui {

namespace {

QPushButton *button(QWidget *parent, const char *name, const QString &caption, const char *tooltip,
                    const char *icon = nullptr)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    b->setAutoDefault(false);
    if (icon)
        b->setIcon(QIcon::fromTheme(QLatin1String(icon)));
    return b;
}

bool isDatabaseFile(const QString &path)
{
    static const QStringList kinds{QStringLiteral("DBF"), QStringLiteral("DB"), QStringLiteral("MDB"),
                                   QStringLiteral("XLS"), QStringLiteral("WK4")};
    return kinds.contains(catalogue::GetFileExt(path));
}

} // namespace

SendFile1::SendFile1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("SendFile1"));
    setWindowTitle(QStringLiteral("Send Files with E-Mail"));

    m_files = new QListWidget(this);
    m_files->setObjectName(QStringLiteral("List1_0"));
    m_history = new QListWidget(this);
    m_history->setObjectName(QStringLiteral("List1_1"));
    m_history->setToolTip(QStringLiteral("History of E-Mail sent with Pictures"));
    m_recipients = new QPlainTextEdit(this);
    m_recipients->setObjectName(QStringLiteral("CMBSENDTO"));
    m_recipients->setToolTip(QStringLiteral("E-Mail Addresses Image or Picture Sent to"));
    m_subject = new QLineEdit(this);
    m_subject->setObjectName(QStringLiteral("Text1_0"));
    m_message = new QPlainTextEdit(this);
    m_message->setObjectName(QStringLiteral("Text1_1"));
    m_message->setToolTip(QStringLiteral("Enter Message to accompany Picture or Image"));
    m_omitZip = new QCheckBox(QStringLiteral("Omit Zip File"), this);
    m_omitZip->setObjectName(QStringLiteral("CHKZIP"));
    m_composer = new QCheckBox(QStringLiteral("Send with Outlook Express"), this);
    m_composer->setObjectName(QStringLiteral("CHKCOMP"));
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("SendProgress"));
    m_progress->setVisible(false);
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("SendStatus"));
    m_status->setWordWrap(true);

    m_sendButton = button(this, "OKBtn", QStringLiteral("Send"), "Send Files Over the Internet");
    m_cancelButton = button(this, "CancelBtn", QStringLiteral("Cancel"),
                            "Close the Send Pictures and Images over the Internet Window");
    auto *help = button(this, "HelpBtn", QStringLiteral("Help"), "Help with Send Pictures and Images over the Internet Window");
    auto *clearLog = button(this, "ClearBtn", QStringLiteral("Clear Log"), "Clear Image E-Mail Send History");
    auto *open = button(this, "OpenBtn", QString(), "Find Picture or Text file to Send", "document-open");
    auto *del = button(this, "DeleteBtn", QString(), "Delete Highlighted file from list", "list-remove");
    auto *clearFiles = button(this, "ClearPictBtn", QString(), "Clear Entire List of Pictures to Send", "edit-clear");

    auto *menus = new QMenuBar(this);
    QMenu *file = menus->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("Create New E-Mail Address Book"), this, [this] { emit addressBookRequested(QStringLiteral("N")); })
        ->setObjectName(QStringLiteral("mnuCreateBook"));
    file->addAction(QStringLiteral("&Open E-Mail Address Book"), this, [this] { emit addressBookRequested(QStringLiteral("O")); })
        ->setObjectName(QStringLiteral("mnuFileOpen"));
    file->addAction(QStringLiteral("Sen&d..."), this, &SendFile1::send)->setObjectName(QStringLiteral("mnuFileSend"));
    file->addSeparator();
    file->addAction(QStringLiteral("E&xit"), this, &SendFile1::close)->setObjectName(QStringLiteral("mnuFileExit"));
    QMenu *helpMenu = menus->addMenu(QStringLiteral("&Help"));
    helpMenu->addAction(QStringLiteral("&Contents"), this, &SendFile1::helpRequested);
    helpMenu->addAction(QStringLiteral("&Search For Help On.."), this, &SendFile1::helpRequested);
    helpMenu->addAction(QStringLiteral("Quick Tips for Sending Files"), this, &SendFile1::quickTipsRequested);
    helpMenu->addAction(QStringLiteral("&About Tarnby..."), this, &SendFile1::aboutRequested);

    auto *layout = new QGridLayout(this);
    layout->setMenuBar(menus);
    layout->addWidget(new QLabel(QStringLiteral("Pictures to Send:"), this), 0, 0);
    auto *fileButtons = new QHBoxLayout;
    for (QPushButton *b : {open, del, clearFiles})
        fileButtons->addWidget(b);
    fileButtons->addStretch();
    layout->addLayout(fileButtons, 0, 1);
    layout->addWidget(m_files, 1, 0, 1, 2);
    layout->addWidget(new QLabel(QStringLiteral("Send to E-Mail Address:"), this), 2, 0);
    layout->addWidget(m_recipients, 3, 0, 1, 2);
    layout->addWidget(new QLabel(QStringLiteral("Subject:"), this), 4, 0);
    layout->addWidget(m_subject, 4, 1);
    layout->addWidget(new QLabel(QStringLiteral("Message:"), this), 5, 0);
    layout->addWidget(m_message, 6, 0, 1, 2);
    layout->addWidget(m_omitZip, 7, 0);
    layout->addWidget(m_composer, 7, 1);
    layout->addWidget(new QLabel(QStringLiteral("History Log:"), this), 8, 0);
    layout->addWidget(m_history, 9, 0, 1, 2);
    layout->addWidget(m_progress, 10, 0, 1, 2);
    layout->addWidget(m_status, 11, 0, 1, 2);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {m_sendButton, m_cancelButton, clearLog, help})
        buttons->addWidget(b);
    layout->addLayout(buttons, 12, 0, 1, 2);

    connect(m_sendButton, &QPushButton::clicked, this, &SendFile1::send);
    connect(m_cancelButton, &QPushButton::clicked, this, [this] {
        if (isSending())
            m_cancel = true;
        else
            close();
    });
    connect(help, &QPushButton::clicked, this, &SendFile1::helpRequested);
    connect(clearLog, &QPushButton::clicked, this, &SendFile1::clearLog);
    connect(open, &QPushButton::clicked, this, &SendFile1::chooseFile);
    connect(del, &QPushButton::clicked, this, &SendFile1::deleteFile);
    connect(clearFiles, &QPushButton::clicked, this, &SendFile1::clearFiles);
    connect(&m_watcher, &QFutureWatcher<mail::SendResult>::finished, this, &SendFile1::sendDone);

    installWindowColors(this, m_state);
}

SendFile1::~SendFile1()
{
    // A send still running is stopped and waited for: it uses this window's
    // cancel flag.
    m_cancel = true;
    m_watcher.disconnect(this);
    m_watcher.waitForFinished();
}

void SendFile1::start(const QString &firstFile)
{
    if (!firstFile.isEmpty())
        addFile(firstFile);
    m_log.load(m_state.programFile(mail::SendLogFileName));
    m_history->addItems(m_log.lines());
    if (!m_state.options.toAddress1.isEmpty())
        m_recipients->setPlainText(m_state.options.toAddress1 + QStringLiteral("\r\n"));
}

QStringList SendFile1::files() const
{
    QStringList result;
    for (int i = 0; i < m_files->count(); ++i)
        result << m_files->item(i)->text();
    return result;
}

QStringList SendFile1::historyLines() const
{
    QStringList result;
    for (int i = 0; i < m_history->count(); ++i)
        result << m_history->item(i)->text();
    return result;
}

void SendFile1::addFile(const QString &path)
{
    const QString trimmed = path.trimmed();
    if (trimmed.isEmpty())
        return;
    m_files->addItem(trimmed);
    if (isDatabaseFile(trimmed))
        databaseCheck(trimmed);
}

void SendFile1::chooseFile()
{
    DialogRequest request;
    request.kind = DialogKind::OpenFile;
    request.title = QStringLiteral("Select Picture File Name to Send");
    request.filter = catalogue::pictureDialogFilter();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (answer.accepted)
        addFile(answer.path);
}

void SendFile1::deleteFile()
{
    if (m_files->currentRow() >= 0)
        delete m_files->takeItem(m_files->currentRow());
}

void SendFile1::clearFiles()
{
    m_files->clear();
}

void SendFile1::clearLog()
{
    if (!m_services.messages.ask(QStringLiteral("Do you want to Clear the Database File Send History Log?"), this))
        return;
    m_history->clear();
    m_log.clear();
    QString error;
    if (!m_log.save(&error))
        m_services.messages.inform(error, this);
}

void SendFile1::addRecipient(const QString &address, const QString &name)
{
    m_recipients->moveCursor(QTextCursor::End);
    m_recipients->insertPlainText(address + QStringLiteral("\r\n"));
    m_recipientNames += name + QStringLiteral("\r\n");
}

void SendFile1::databaseCheck(const QString &path)
{
    if (!m_findWindow)
        return;
    if (QWidget *window = m_findWindow(path)) {
        window->raise();
        m_services.messages.inform(QStringLiteral("Window Displaying Database must be Closed to Send - ") + path, this);
    }
}

void SendFile1::setBusy(bool busy)
{
    m_sendButton->setEnabled(!busy);
    m_progress->setVisible(busy);
    if (busy)
        setCursor(Qt::BusyCursor);
    else
        unsetCursor();
}

void SendFile1::send()
{
    if (isSending())
        return;
    if (m_recipients->toPlainText().isEmpty()) {
        m_services.messages.inform(QStringLiteral("You must Enter a Send To Address"), this);
        m_recipients->setFocus();
        return;
    }
    m_zipArchive.clear();
    m_sendState = false;
    m_status->clear();
    if (m_omitZip->isChecked()) {
        for (const QString &file : files()) {
            if (isDatabaseFile(file))
                databaseCheck(file);
        }
    }

    if (m_composer->isChecked()) {
        // The desktop's mail program sends: each message opens in its own
        // window, where the user sends it.
        const QStringList recipients = mail::recipientsFromText(m_recipients->toPlainText());
        const mail::SendArchiveResult archive = files().isEmpty() ? mail::SendArchiveResult{}
                                                                  : mail::makeSendArchive(files());
        bool ok = archive.result.ok() && !files().isEmpty() && !recipients.isEmpty()
                  && recipients.size() <= mail::MaxRecipients && files().size() <= mail::MaxSendFiles;
        m_zipArchive = archive.path;
        const QString user = m_state.options.smtpUser.isEmpty() ? m_state.options.fromAddress : m_state.options.smtpUser;
        for (const QString &address : ok ? recipients : QStringList()) {
            mailnet::ComposeRequest request{address, mail::sendSubject(m_subject->text(), user), m_message->toPlainText(),
                                            m_omitZip->isChecked() ? files() : QStringList{archive.path}};
            QString error;
            if (!mailnet::openComposer(request, &error)) {
                m_status->setText(error);
                ok = false;
                break;
            }
            const QDateTime now = QDateTime::currentDateTime();
            for (const QString &file : files())
                m_history->addItem(mail::historyLine(file, address, now));
        }
        m_sendState = ok;
        m_services.messages.inform(ok ? QStringLiteral("File successfully sent to E-Mail Program")
                                      : QStringLiteral("File did not send successfully to E-Mail Program"),
                                   this);
        emit sendFinished(ok);
        return;
    }

    setBusy(true);
    const mailnet::ServerSettings server = mail::outgoingServer(m_state.options);
    if (server.user.isEmpty() || server.host.isEmpty()) {
        startSend(QString());
        return;
    }
    m_status->setText(QStringLiteral("Reading the password from the keyring"));
    settings::MailPasswords::read(mail::passwordKey(server, true), this, [this](const settings::PasswordResult &r) {
        if (!r.ok) {
            setBusy(false);
            m_status->setText(r.error);
            m_services.messages.inform(QStringLiteral("File did not send successfully to E-Mail Program"), this);
            emit sendFinished(false);
            return;
        }
        startSend(r.password);
    });
}

void SendFile1::startSend(const QString &password)
{
    mail::SendRequest request;
    request.files = files();
    request.recipients = mail::recipientsFromText(m_recipients->toPlainText());
    request.subject = m_subject->text();
    request.message = m_message->toPlainText();
    request.omitZip = m_omitZip->isChecked();
    request.server = mail::outgoingServer(m_state.options);
    request.server.password = password;
    request.server.cancel = &m_cancel;
    request.fromAddress = m_state.options.fromAddress.isEmpty() ? request.server.user : m_state.options.fromAddress;
    request.userName = request.server.user.isEmpty() ? request.fromAddress : request.server.user;
    if (request.server.host.isEmpty()) {
        // Nothing to connect to: the send fails with a reason in the window.
        setBusy(false);
        m_status->setText(QStringLiteral("No outgoing mail server is set in the program options."));
        m_services.messages.inform(QStringLiteral("File did not send successfully to E-Mail Program"), this);
        emit sendFinished(false);
        return;
    }
    m_cancel = false;
    m_progress->setRange(0, 0);
    QPointer<SendFile1> self(this);
    auto progress = [self](const QString &step, qint64 done, qint64 total) {
        QMetaObject::invokeMethod(
            self, [self, step, done, total] {
                if (!self)
                    return;
                self->m_status->setText(step);
                self->m_progress->setRange(0, total > 0 ? 1000 : 0);
                if (total > 0)
                    self->m_progress->setValue(int(done * 1000 / total));
            },
            Qt::QueuedConnection);
    };
    m_watcher.setFuture(QtConcurrent::run([request, progress] { return mail::sendFiles(request, progress); }));
}

void SendFile1::sendDone()
{
    const mail::SendResult result = m_watcher.result();
    setBusy(false);
    m_zipArchive = result.archivePath;
    m_history->addItems(result.historyLines);
    m_sendState = result.ok;
    m_status->setText(result.errors.join(QLatin1Char('\n')));
    m_services.messages.inform(result.ok ? QStringLiteral("File successfully sent to E-Mail Program")
                                         : QStringLiteral("File did not send successfully to E-Mail Program"),
                               this);
    emit sendFinished(result.ok);
}

void SendFile1::reject()
{
    close();
}

void SendFile1::closeEvent(QCloseEvent *event)
{
    if (isSending()) {
        m_cancel = true;
        m_watcher.waitForFinished();
    }
    m_log.append(historyLines().mid(m_log.lines().size()));
    QString error;
    if (!m_log.path().isEmpty() && !m_log.save(&error))
        m_services.messages.inform(error, this);
    event->accept();
    QDialog::reject();
}

} // namespace tarnby::ui
