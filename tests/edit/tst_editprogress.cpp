#include "core/edit/EditOperation.h"
#include "core/edit/EditProgress.h"

#include <QMutex>
#include <QTest>

using namespace tarnby;
using namespace tarnby::edit;

Q_DECLARE_METATYPE(tarnby::edit::EditOperation)

namespace {

// Large enough to be worked in many bands (24 MB at 32 bits).
imaging::Picture largePicture(int frames = 1)
{
    QImage image(3000, 2000, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = qRgb((x * 7) & 0xff, (y * 3) & 0x7f, (x ^ y) & 0xff);
    }
    imaging::Picture picture;
    for (int i = 0; i < frames; ++i)
        picture.frames.append({i == 0 ? image : image.mirrored(true, false), 100});
    refreshInfo(&picture);
    return picture;
}

struct Recorder {
    QMutex mutex;
    QList<int> reports;
    int cancelAfter = -1; // reports before the hook says stop; -1 never

    EditProgress::Hook hook()
    {
        return [this](int permille) {
            QMutexLocker lock(&mutex);
            reports.append(permille);
            return cancelAfter < 0 || reports.size() < cancelAfter;
        };
    }
};

} // namespace

class TestEditProgress : public QObject
{
    Q_OBJECT

private slots:
    void operations_data()
    {
        QTest::addColumn<EditOperation>("operation");
        QTest::addColumn<int>("frames");
        QTest::newRow("invert") << EditOperation::invert() << 1;
        QTest::newRow("stretch, two passes") << EditOperation::stretch() << 1;
        QTest::newRow("flip") << EditOperation::flip() << 1;
        QTest::newRow("brightness") << EditOperation::brightness(200) << 1;
        QTest::newRow("rotate 17.5, enlarged") << EditOperation::rotate(1750, RotateFit::Enlarge, qRgb(0, 0, 0)) << 1;
        QTest::newRow("resize without resampling") << EditOperation::resize(QSize(2500, 1500), Resampling::None) << 1;
        QTest::newRow("reverse, two frames") << EditOperation::reverse() << 2;
    }

    // Run to the end: the reports only grow, stay under the whole until the
    // end, and the result is the operation's.
    void progressGrowsToTheEnd()
    {
        QFETCH(EditOperation, operation);
        QFETCH(int, frames);
        imaging::Picture picture = largePicture(frames);
        const imaging::Picture original = picture;
        Recorder recorder;
        EditProgress progress;
        progress.setHook(recorder.hook());
        QString error;
        QVERIFY(applyToPicture(operation, &picture, &error, &progress));
        QCOMPARE(progress.permille(), 1000);
        QVERIFY2(recorder.reports.size() >= 6 * frames, qPrintable(QString::number(recorder.reports.size())));
        QVERIFY(recorder.reports.last() >= 990);
        for (qsizetype i = 1; i < recorder.reports.size(); ++i)
            QVERIFY(recorder.reports.at(i) >= recorder.reports.at(i - 1));
        QVERIFY(*std::max_element(recorder.reports.begin(), recorder.reports.end()) < 1000);
        for (int i = 0; i < frames; ++i)
            QCOMPARE(picture.frames.at(i).image, apply(operation, original.frames.at(i).image));
    }

    // A cancel from the hook stops the work: false, "Cancelled.", and the
    // picture as it was, even for the operations that work in place.
    void cancelLeavesThePicture()
    {
        QFETCH(EditOperation, operation);
        QFETCH(int, frames);
        imaging::Picture picture = largePicture(frames);
        const QImage first = picture.frames.constFirst().image.copy();
        const QImage last = picture.frames.constLast().image.copy();
        Recorder recorder;
        recorder.cancelAfter = 2;
        EditProgress progress;
        progress.setHook(recorder.hook());
        QString error;
        QVERIFY(!applyToPicture(operation, &picture, &error, &progress));
        QVERIFY(progress.isCancelled());
        QCOMPARE(error, QStringLiteral("Cancelled."));
        QVERIFY(progress.permille() < 1000);
        QCOMPARE(picture.frames.size(), frames);
        QCOMPARE(picture.frames.constFirst().image, first);
        QCOMPARE(picture.frames.constLast().image, last);
        // Most of the work was skipped: far fewer reports than bands.
        QVERIFY2(recorder.reports.size() < 20, qPrintable(QString::number(recorder.reports.size())));
    }
    void cancelLeavesThePicture_data() { operations_data(); }
    void progressGrowsToTheEnd_data() { operations_data(); }

    // Without a progress nothing changes for the callers that have none (the
    // command line): the same pixels.
    void withoutProgress()
    {
        imaging::Picture a = largePicture();
        imaging::Picture b = a;
        b.frames.first().image.detach();
        QString error;
        EditProgress progress;
        QVERIFY(applyToPicture(EditOperation::stretch(), &a, &error));
        QVERIFY(applyToPicture(EditOperation::stretch(), &b, &error, &progress));
        QCOMPARE(a.image(), b.image());
    }
};

QTEST_MAIN(TestEditProgress)
#include "tst_editprogress.moc"
