#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"

#include "TestDir.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <unistd.h>

using namespace tarnby;

class TestFolderTree : public QObject
{
    Q_OBJECT
private slots:
    void mountKinds_data();
    void mountKinds();
    void mountTableEscapes();
    void networkHosts_data();
    void networkHosts();
    void rootsOrder();

    void nodeListGrowsInExpansionOrder();
    void hiddenFoldersShown();
    void symlinkLoopIsALeaf();
    void vanishedFolder();
    void refreshKeepsIndices();
    void revealPath();
    void networkNodeHoldsMounts();
    void dropOnFolderAsksForTransfer();
    void modelContract();
};

void TestFolderTree::mountKinds_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("mountPoint");
    QTest::addColumn<int>("kind");
    QTest::newRow("root on ext4") << "ext4" << "/" << int(MountKind::Local);
    QTest::newRow("root on overlay stays") << "overlay" << "/" << int(MountKind::Local);
    QTest::newRow("second disk") << "ext4" << "/data" << int(MountKind::Local);
    QTest::newRow("usb stick below /media") << "vfat" << "/media/ann/STICK" << int(MountKind::Local);
    QTest::newRow("usb stick below /run/media") << "vfat" << "/run/media/ann/STICK" << int(MountKind::Local);
    QTest::newRow("proc") << "proc" << "/proc" << int(MountKind::Pseudo);
    QTest::newRow("sysfs") << "sysfs" << "/sys" << int(MountKind::Pseudo);
    QTest::newRow("cgroup2") << "cgroup2" << "/sys/fs/cgroup" << int(MountKind::Pseudo);
    QTest::newRow("tmpfs below /run") << "tmpfs" << "/run/user/1000" << int(MountKind::Pseudo);
    QTest::newRow("tmpfs /tmp kept") << "tmpfs" << "/tmp" << int(MountKind::Local);
    QTest::newRow("snap image") << "squashfs" << "/snap/core/1" << int(MountKind::Pseudo);
    QTest::newRow("ext4 bound below /dev") << "ext4" << "/dev/termination-log" << int(MountKind::Pseudo);
    QTest::newRow("nfs") << "nfs" << "/mnt/nas" << int(MountKind::Network);
    QTest::newRow("nfs4") << "nfs4" << "/mnt/nas4" << int(MountKind::Network);
    QTest::newRow("cifs") << "cifs" << "/mnt/share" << int(MountKind::Network);
    QTest::newRow("sshfs") << "fuse.sshfs" << "/home/ann/remote" << int(MountKind::Network);
    QTest::newRow("davfs") << "davfs" << "/mnt/dav" << int(MountKind::Network);
}

void TestFolderTree::mountKinds()
{
    QFETCH(QString, type);
    QFETCH(QString, mountPoint);
    QFETCH(int, kind);
    QCOMPARE(int(classifyMount({QStringLiteral("dev"), mountPoint, type})), kind);
}

void TestFolderTree::mountTableEscapes()
{
    const QByteArray text = "/dev/sda1 / ext4 rw,relatime 0 0\n"
                            "/dev/sdb1 /media/ann/My\\040Disk vfat rw 0 0\n"
                            "\n"
                            "garbage\n"
                            "//nas/photos /mnt/photos cifs rw 0 0\n";
    const QList<MountEntry> entries = parseMountTable(text);
    QCOMPARE(entries.size(), 3);
    QCOMPARE(entries.at(1).mountPoint, QStringLiteral("/media/ann/My Disk"));
    QCOMPARE(entries.at(2).type, QStringLiteral("cifs"));
}

void TestFolderTree::networkHosts_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("host");
    QTest::newRow("smb share") << "//nas/photos" << "nas";
    QTest::newRow("nfs export") << "fileserver:/export/home" << "fileserver";
    QTest::newRow("sshfs with user") << "ann@box.local:/home/ann" << "box.local";
    QTest::newRow("no host") << "davfs" << "";
}

void TestFolderTree::networkHosts()
{
    QFETCH(QString, device);
    QFETCH(QString, host);
    QCOMPARE(networkHost({device, QStringLiteral("/mnt/x"), QStringLiteral("nfs")}), host);
}

void TestFolderTree::rootsOrder()
{
    const QList<MountEntry> mounts = parseMountTable("proc /proc proc rw 0 0\n"
                                                     "/dev/sdb1 /data ext4 rw 0 0\n"
                                                     "overlay / overlay rw 0 0\n"
                                                     "/dev/sdc1 /boot ext4 rw 0 0\n"
                                                     "/dev/sdc1 /boot ext4 rw 0 0\n"
                                                     "nas:/x /mnt/nas nfs rw 0 0\n");
    const FolderRoots roots = rootsFromMounts(mounts, QStringLiteral("/home/ann"));
    QCOMPARE(roots.volumes, (QStringList{"/", "/boot", "/data"}));
    QCOMPARE(roots.network.size(), 1);
    QCOMPARE(roots.network.first().mountPoint, QStringLiteral("/mnt/nas"));
    QCOMPARE(roots.home, QStringLiteral("/home/ann"));
}

// Roots made of a test folder: one "volume" and the network node.
static FolderRoots testRoots(const QString &folder, const QList<MountEntry> &network = {})
{
    FolderRoots roots;
    roots.volumes = {folder};
    roots.network = network;
    return roots;
}

void TestFolderTree::nodeListGrowsInExpansionOrder()
{
    TestDir dir;
    dir.createFolder("b/b2");
    dir.createFolder("a/a1");
    dir.createFolder("a/A0");
    dir.createFile("a/file.txt");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    QCOMPARE(model.nodeCount(), 2); // the volume and the network node
    QCOMPARE(model.nodeText(1), QStringLiteral("Network Neighborhood"));

    QCOMPARE(model.expand(0), 2);
    QCOMPARE(model.nodeText(2), QStringLiteral("a"));
    QCOMPARE(model.nodeText(3), QStringLiteral("b"));
    // Expanding b before a puts b's child before a's children.
    QCOMPARE(model.expand(3), 1);
    QCOMPARE(model.expand(2), 2);
    QCOMPARE(model.nodeText(4), QStringLiteral("b2"));
    QCOMPARE(model.nodeText(5), QStringLiteral("A0"));
    QCOMPARE(model.nodeText(6), QStringLiteral("a1"));
    QCOMPARE(model.nodePath(6), dir.filePath("a/a1"));
    QCOMPARE(model.nodeParent(6), 2);
    // Files are not nodes; expanding twice adds nothing.
    QCOMPARE(model.expand(2), 0);
    QCOMPARE(model.nodeCount(), 7);
    QVERIFY(model.isListed(2));
    QVERIFY(!model.isListed(6));
}

void TestFolderTree::hiddenFoldersShown()
{
    TestDir dir;
    dir.createFolder(".config");
    dir.createFolder("visible");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    model.expand(0);
    QCOMPARE(model.nodeChildren(0).size(), 2);
    QCOMPARE(model.nodeText(model.nodeChildren(0).first()), QStringLiteral(".config"));
}

void TestFolderTree::symlinkLoopIsALeaf()
{
    TestDir dir;
    dir.createFolder("a/b");
    QVERIFY(QFile::link(dir.filePath("a"), dir.filePath("a/b/back")));
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    model.expand(0);                            // a
    const int a = model.findPath(dir.filePath("a"));
    model.expand(a);                            // b
    const int b = model.findPath(dir.filePath("a/b"));
    QCOMPARE(model.expand(b), 1);               // back
    const int back = model.findPath(dir.filePath("a/b/back"));
    QVERIFY(back > 0);
    QCOMPARE(model.expand(back), 0);            // would be a again
    QVERIFY(!model.hasChildren(model.indexForNode(back)));
    // A walk that expands every node by index comes to an end.
    for (int i = 0; i < model.nodeCount() && i < 1000; ++i)
        model.expand(i);
    QVERIFY(model.nodeCount() < 20);
}

void TestFolderTree::vanishedFolder()
{
    TestDir dir;
    dir.createFolder("gone/inner");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    model.expand(0);
    const int gone = model.findPath(dir.filePath("gone"));
    QVERIFY(QDir(dir.filePath("gone")).removeRecursively());
    QCOMPARE(model.expand(gone), 0);
    QVERIFY(!model.hasChildren(model.indexForNode(gone)));
    model.refresh(0);
    QCOMPARE(model.findPath(dir.filePath("gone")), -1);
    QCOMPARE(model.rowCount(model.indexForNode(0)), 0);
}

void TestFolderTree::refreshKeepsIndices()
{
    TestDir dir;
    dir.createFolder("one");
    dir.createFolder("two");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    model.expand(0);
    const int one = model.findPath(dir.filePath("one"));
    const int two = model.findPath(dir.filePath("two"));
    dir.createFolder("three");
    QVERIFY(QDir(dir.filePath("one")).removeRecursively());
    model.refresh(0);
    QCOMPARE(model.findPath(dir.filePath("two")), two);      // same index as before
    QVERIFY(model.findPath(dir.filePath("three")) > two);   // appended
    QCOMPARE(model.findPath(dir.filePath("one")), -1);
    QCOMPARE(model.nodeText(one), QStringLiteral("one"));   // the index stays taken
    QCOMPARE(model.rowCount(model.indexForNode(0)), 2);
}

void TestFolderTree::revealPath()
{
    TestDir dir;
    dir.createFolder("x/y/z");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    const int z = model.revealPath(dir.filePath("x/y/z"));
    QVERIFY(z > 0);
    QCOMPARE(model.nodePath(z), dir.filePath("x/y/z"));
    QCOMPARE(model.revealPath(dir.filePath("x/y/z")), z); // nothing is added twice
    dir.createFolder("x/new");                            // made after x was listed
    QVERIFY(model.revealPath(dir.filePath("x/new")) > z);
    QCOMPARE(model.revealPath(dir.filePath("x/missing")), -1);
    QCOMPARE(model.revealPath(QStringLiteral("/definitely/not/below/the/root")), -1);
}

void TestFolderTree::networkNodeHoldsMounts()
{
    TestDir dir;
    const QString share = dir.createFolder("share");
    dir.createFolder("share/photos");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.createFolder("disk"), {{QStringLiteral("//nas/share"), share, QStringLiteral("cifs")}}));
    const int network = 1;
    QCOMPARE(model.nodeKind(network), FolderTreeModel::NodeKind::Network);
    QCOMPARE(model.nodeChildren(network).size(), 1);
    const int mount = model.nodeChildren(network).first();
    QCOMPARE(model.nodeText(mount), QStringLiteral("nas (%1)").arg(share));
    QCOMPARE(model.expand(network), 0);
    QCOMPARE(model.expand(mount), 1);
    QCOMPARE(model.nodeText(model.nodeCount() - 1), QStringLiteral("photos"));
}

void TestFolderTree::dropOnFolderAsksForTransfer()
{
    TestDir dir;
    dir.createFolder("target");
    const QString file = dir.createFile("photo.jpg");
    FolderTreeModel model;
    model.setRoots(testRoots(dir.path()));
    model.expand(0);
    const QModelIndex target = model.indexForNode(model.findPath(dir.filePath("target")));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file)});
    QSignalSpy spy(&model, &FolderTreeModel::dropRequested);
    QVERIFY(!model.canDropMimeData(&data, Qt::MoveAction, -1, -1, model.indexForNode(1))); // network node
    QVERIFY(model.dropMimeData(&data, Qt::CopyAction, -1, -1, target));
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first().at(0).toStringList(), QStringList{file});
    QCOMPARE(spy.first().at(1).toString(), dir.filePath("target"));
    QCOMPARE(spy.first().at(2).value<Qt::DropAction>(), Qt::CopyAction);
}

void TestFolderTree::modelContract()
{
    TestDir dir;
    dir.createFolder("a/b/c");
    dir.createFolder("d");
    FolderTreeModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setRoots(testRoots(dir.path()));
    model.revealPath(dir.filePath("a/b/c"));
    dir.createFolder("e");
    QVERIFY(QDir(dir.filePath("d")).removeRecursively());
    model.refresh(0);
}

QTEST_GUILESS_MAIN(TestFolderTree)
#include "tst_foldertree.moc"
