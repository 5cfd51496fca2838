#include "ScriptedResponder.h"

#include "ui/services/UiServices.h"

#include <QTest>

using namespace tarnby::ui;

// The windows' own tests check the messages and dialogs they raise; this one
// keeps the responder's default safe: a question or dialog no test scripted
// is answered No or cancelled, so nothing is deleted or written unasked.
class TestServices : public QObject
{
    Q_OBJECT
private slots:
    void unscriptedAnswersChangeNothing();
};

void TestServices::unscriptedAnswersChangeNothing()
{
    UiServices services;
    ScriptedResponder responder(services);
    QVERIFY(!services.messages.ask(QStringLiteral("Delete?")));
    const DialogAnswer a = services.dialogs.run({});
    QVERIFY(!a.accepted);
    QVERIFY(a.path.isEmpty());
    QCOMPARE(responder.messageTexts(), QStringList{QStringLiteral("Delete?")});
}

QTEST_MAIN(TestServices)
#include "tst_services.moc"
