#include "ui/organizer/OrganizerAccess.h"

#include "core/app/AppState.h"
#include "core/organizer/OrganizerLocation.h"
#include "core/settings/MailPasswords.h"
#include "ui/organizer/GrpRepair1.h"
#include "ui/services/UiServices.h"

#include <QEventLoop>
#include <QHash>

namespace tarnby::ui {

using namespace organizer;

organizer::OrganizerStore catalogueFor(const AppState &state)
{
    StoreLocation location = organizerLocation(state.programFolder, state.options);
    if (location.engine == StoreLocation::Engine::PostgreSQL) {
        static QHash<QString, QString> passwords; // for the run, never written anywhere
        const QString key = organizerPasswordKey(location);
        if (!passwords.contains(key)) {
            QEventLoop loop;
            QObject context;
            settings::MailPasswords::read(
                key, &context,
                [&](const settings::PasswordResult &r) {
                    passwords.insert(key, r.ok ? r.password : QString());
                    loop.quit();
                },
                3000);
            loop.exec();
        }
        location.password = passwords.value(key);
    }
    return OrganizerStore(location);
}

QString catalogueProblemText(const StoreResult &result)
{
    return result.error + QStringLiteral(" - Do you want to open the Compact or Repair Database window?");
}

bool catalogueReady(const OrganizerStore &store, AppState &state, UiServices &services, QWidget *parent)
{
    const StoreResult checked = store.check();
    if (checked.ok())
        return true;
    // The catalogue once ended such a window quietly, leaving it empty; the
    // user is told instead, and led to the repair.
    if (checked.status == StoreStatus::Missing || checked.status == StoreStatus::Damaged) {
        if (services.messages.ask(catalogueProblemText(checked), parent)) {
            GrpRepair1 repair(state, services, store, parent);
            repair.exec();
        }
        return false;
    }
    services.messages.inform(checked.error, parent);
    return false;
}

} // namespace tarnby::ui
