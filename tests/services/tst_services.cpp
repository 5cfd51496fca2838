#include "ScriptedResponder.h"

#include "ui/services/UiServices.h"

#include "TestDir.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

using namespace tarnby::ui;

// The windows' own tests check the messages and dialogs they raise; this one
// keeps the responder's default safe: a question or dialog no test scripted
// is answered No or cancelled, so nothing is deleted or written unasked.
class TestServices : public QObject
{
    Q_OBJECT
private slots:
    void unscriptedAnswersChangeNothing();
    void pictureSaveDialogAsksDepthAndQuality_data();
    void pictureSaveDialogAsksDepthAndQuality();
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

void TestServices::pictureSaveDialogAsksDepthAndQuality_data()
{
    QTest::addColumn<bool>("offerQuality");
    QTest::newRow("JPEG: depth and quality") << true;
    QTest::newRow("PNG: depth only") << false;
}

void TestServices::pictureSaveDialogAsksDepthAndQuality()
{
    // The real dialog, driven as a user would: the presets are shown, the
    // choices come back with the path.
    QFETCH(bool, offerQuality);
    TestDir dir;
    const QString target = dir.filePath(QStringLiteral("picture.jpg"));
    UiServices services;
    DialogRequest request;
    request.kind = DialogKind::SaveFile;
    request.title = QStringLiteral("Enter New File Name for - picture.jpg");
    request.directory = dir.path();
    request.bitsPerPixelChoices = {8, 24};
    request.bitsPerPixel = 24;
    request.offerQuality = offerQuality;
    request.quality = 64;
    QString presetBits;
    int presetQuality = -1;
    bool qualityShown = false;
    QTimer::singleShot(200, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        auto *dialog = qobject_cast<QFileDialog *>(modal);
        if (!dialog && modal)
            modal->close();
        QVERIFY(dialog);
        auto *bits = dialog->findChild<QComboBox *>(QStringLiteral("CMBBITS"));
        auto *quality = dialog->findChild<QSpinBox *>(QStringLiteral("TxtQuality"));
        if (!bits) { // the check after the dialog reports it
            dialog->reject();
            return;
        }
        presetBits = bits->currentText();
        bits->setCurrentIndex(bits->findText(QStringLiteral("8")));
        qualityShown = quality != nullptr;
        if (quality) {
            presetQuality = quality->value();
            quality->setValue(33);
        }
        // The name typed into the dialog's name box, as a user would.
        if (auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
            name->setText(QStringLiteral("picture.jpg"));
        QMetaObject::invokeMethod(dialog, "accept");
        if (dialog->isVisible())
            dialog->reject();
    });
    const DialogAnswer answer = services.dialogs.run(request);
    QCOMPARE(presetBits, QStringLiteral("24"));
    QCOMPARE(qualityShown, offerQuality);
    QVERIFY(answer.accepted);
    QCOMPARE(answer.path, target);
    QCOMPARE(answer.bitsPerPixel, 8);
    QCOMPARE(answer.quality, offerQuality ? 33 : 0);
    if (offerQuality)
        QCOMPARE(presetQuality, 64);
}

QTEST_MAIN(TestServices)
#include "tst_services.moc"
