#include "UiFixture.h"

#include "core/settings/ProgramOptions.h"

#include <QTest>

UiFixture::UiFixture()
{
    state.programFolder = home.path();
}

void UiFixture::saveOptions(const std::function<void(tarnby::settings::ProgramOptions &)> &change)
{
    tarnby::settings::ProgramOptions options;
    tarnby::settings::readProgramOptions(home.path(), options);
    change(options);
    QVERIFY(tarnby::settings::writeProgramOptions(home.path(), options, nullptr));
}
