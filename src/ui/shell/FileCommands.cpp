#include "FileCommands.h"

#include "app/AppState.h"
#include "services/UiServices.h"

// FIXME: the file operations, the unzip offer and the player arrive with the
// browser issue; until then each command says so.
namespace tarnby::ui {

FileCommands::FileCommands(AppState &state, UiServices &services, QWidget *window)
    : QObject(window)
    , m_state(state)
    , m_services(services)
    , m_window(window)
{
}

void FileCommands::notYetAvailable(const QString &what)
{
    m_services.messages.inform(what + QStringLiteral(" is not available in this version of Tarnby."), m_window);
}

void FileCommands::DeleteFile(const QString &) { notYetAvailable(QStringLiteral("Delete File")); }
void FileCommands::MoveFile(const QString &, const QString &) { notYetAvailable(QStringLiteral("Move File")); }
void FileCommands::RenameFile(const QString &) { notYetAvailable(QStringLiteral("Rename File")); }
void FileCommands::SaveFileAs() { notYetAvailable(QStringLiteral("Save File As")); }
void FileCommands::OpenwithOLE() { notYetAvailable(QStringLiteral("Open File with Another Application")); }
void FileCommands::offerUnzip(const QString &) { notYetAvailable(QStringLiteral("Unpacking ZIP archives")); }
void FileCommands::play(const QString &) { notYetAvailable(QStringLiteral("Playing sound and video")); }

} // namespace tarnby::ui
