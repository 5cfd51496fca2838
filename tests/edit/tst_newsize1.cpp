#include "ui/edit/NewSize1.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

using tarnby::ui::NewSize1;

Q_DECLARE_METATYPE(tarnby::ui::NewSize1::Mode)

class TestNewSize1 : public QObject
{
    Q_OBJECT

private slots:
    void captionsByMode_data()
    {
        QTest::addColumn<NewSize1::Mode>("mode");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("frames");
        QTest::addColumn<QString>("resample");
        QTest::newRow("resize") << NewSize1::Mode::Resize << "Resize" << QStringList{" Width ", " Height "} << "Resample";
        QTest::newRow("region resize") << NewSize1::Mode::RegionResize << "Resize" << QStringList{" Width ", " Height "} << "Resample";
        QTest::newRow("intensity") << NewSize1::Mode::IntensityDetect << "Intensity Detect" << QStringList{"Low", "High"} << "Resample";
        QTest::newRow("stamp") << NewSize1::Mode::StampDimensions << "Stamp Dimensions" << QStringList{" Width ", " Height "} << "8-bit";
    }
    void captionsByMode()
    {
        QFETCH(NewSize1::Mode, mode);
        QFETCH(QString, caption);
        QFETCH(QStringList, frames);
        QFETCH(QString, resample);
        NewSize1 dialog;
        dialog.InitTheForm(mode, QSize(1000, 750));
        QCOMPARE(dialog.windowTitle(), caption);
        QStringList titles;
        for (QGroupBox *frame : dialog.findChildren<QGroupBox *>("Frame2"))
            titles << frame->title();
        QCOMPARE(titles, frames);
        QCOMPARE(dialog.findChild<QCheckBox *>("CHKRESAMPLE")->text(), resample);
    }

    void controlsKeepInStep()
    {
        NewSize1 dialog;
        dialog.InitTheForm(NewSize1::Mode::Resize, QSize(1000, 3000));
        auto *widthBar = dialog.findChild<QScrollBar *>("SCWeight1");
        auto *heightBar = dialog.findChild<QScrollBar *>("SCHeight1");
        auto *width = dialog.findChild<QLineEdit *>("TxtWidth1");
        auto *height = dialog.findChild<QLineEdit *>("TxtHeight1");
        QCOMPARE(widthBar->maximum(), 16384);
        QCOMPARE(heightBar->maximum(), 32767);
        QCOMPARE(widthBar->pageStep(), 100);
        QCOMPARE(widthBar->singleStep(), 10);
        QCOMPARE(width->text(), QStringLiteral("1000"));
        QCOMPARE(height->text(), QStringLiteral("3000"));

        dialog.findChild<QCheckBox *>("CHKASPECT")->setChecked(true);
        width->setText(QStringLiteral("333"));
        QCOMPARE(height->text(), QStringLiteral("999"));
        QCOMPARE(heightBar->value(), 999);
        QCOMPARE(widthBar->value(), 333);
        width->setText(QStringLiteral("99999")); // out of range: ignored
        QCOMPARE(widthBar->value(), 333);
        width->setText(QString()); // empty: ignored
        QCOMPARE(widthBar->value(), 333);
        heightBar->setValue(600);
        QCOMPARE(height->text(), QStringLiteral("600"));
        QCOMPARE(width->text(), QStringLiteral("200"));

        dialog.findChild<QCheckBox *>("CHKRESAMPLE")->setChecked(true);
        dialog.findChild<QPushButton *>("OKBtn")->click();
        const NewSize1::Results results = dialog.GetResults();
        QVERIFY(results.accepted);
        QCOMPARE(results.width, 200);
        QCOMPARE(results.height, 600);
        QVERIFY(results.resample);
    }

    void cancelLeavesTheResultsUnaccepted()
    {
        NewSize1 dialog;
        dialog.InitTheForm(NewSize1::Mode::Resize, QSize(640, 480));
        dialog.findChild<QPushButton *>("CancelBtn")->click();
        QVERIFY(!dialog.GetResults().accepted);
    }
};


QTEST_MAIN(TestNewSize1)
#include "tst_newsize1.moc"
