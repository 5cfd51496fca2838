#include "ScriptedResponder.h"

#include "ui/services/UiServices.h"

#include <QTest>

using namespace tarnby::ui;

class TestServices : public QObject
{
    Q_OBJECT
private slots:
    void informIsAnOkBoxTitledTarnby();
    void askAnswersYesOrNo_data();
    void askAnswersYesOrNo();
    void unscriptedAnswersChangeNothing();
    void ownTitle();
    void dialogsAreRecordedAndAnswered();
};

void TestServices::informIsAnOkBoxTitledTarnby()
{
    UiServices services;
    ScriptedResponder responder(services);
    services.messages.inform(QStringLiteral("File Type is not Supported by this Software"));
    QCOMPARE(responder.messages().size(), 1);
    const MessageRequest &m = responder.messages().first();
    QCOMPARE(m.title, QStringLiteral("Tarnby 3.0"));
    QCOMPARE(m.text, QStringLiteral("File Type is not Supported by this Software"));
    QCOMPARE(m.buttons, MessageButtons::Ok);
}

void TestServices::askAnswersYesOrNo_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("yes");
    QTest::newRow("Yes") << int(MessageAnswer::Yes) << true;
    QTest::newRow("No") << int(MessageAnswer::No) << false;
}

void TestServices::askAnswersYesOrNo()
{
    QFETCH(int, answer);
    QFETCH(bool, yes);
    UiServices services;
    ScriptedResponder responder(services);
    responder.answerMessage(MessageAnswer(answer));
    QCOMPARE(services.messages.ask(QStringLiteral("Do You want to Un Zip File - a.zip? ")), yes);
    QCOMPARE(responder.messages().first().buttons, MessageButtons::YesNo);
    QCOMPARE(responder.messages().first().title, QStringLiteral("Tarnby 3.0"));
}

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

void TestServices::ownTitle()
{
    UiServices services;
    ScriptedResponder responder(services);
    services.messages.show({QStringLiteral("Login to Database"), QStringLiteral("Wrong password"), MessageButtons::Ok});
    QCOMPARE(responder.messages().first().title, QStringLiteral("Login to Database"));
}

void TestServices::dialogsAreRecordedAndAnswered()
{
    UiServices services;
    ScriptedResponder responder(services);
    responder.acceptFile(QStringLiteral("/tmp/a.png"), 3);
    DialogRequest request;
    request.title = QStringLiteral("Select File to Open");
    request.filter = QStringLiteral("Bitmap Files|*.BMP");
    const DialogAnswer a = services.dialogs.run(request);
    QVERIFY(a.accepted);
    QCOMPARE(a.path, QStringLiteral("/tmp/a.png"));
    QCOMPARE(a.filterIndex, 3);
    QCOMPARE(responder.dialogs().first().title, QStringLiteral("Select File to Open"));
    QCOMPARE(responder.dialogs().first().filter, QStringLiteral("Bitmap Files|*.BMP"));
}

QTEST_MAIN(TestServices)
#include "tst_services.moc"
