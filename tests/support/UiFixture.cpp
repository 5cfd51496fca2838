#include "UiFixture.h"

#include "core/settings/ProgramOptions.h"

#include <QListWidget>
#include <QPushButton>
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

QStringList listTexts(const QListWidget *list)
{
    QStringList result;
    for (int i = 0; i < list->count(); ++i)
        result << list->item(i)->text();
    return result;
}

void clickButton(QWidget *parent, const QString &name)
{
    auto *button = parent->findChild<QPushButton *>(name);
    QVERIFY2(button, qPrintable(name));
    button->click();
}
