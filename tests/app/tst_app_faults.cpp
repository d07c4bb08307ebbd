#include "app/descriptors.h"
#include "tests/app/viewer_tree.h"
#include "util/file_descriptor.h"

#include <fcntl.h>

/// What a desktop or a script may hand the program that it did not ask for.
class TestAppFaults : public QObject
{
    Q_OBJECT

private slots:
    void closedStreams_data();
    void closedStreams();
    void openStreamsStayAlone();
    void fewDescriptors_data();
    void fewDescriptors();

private:
    static QStringList viewerAfter(const QString &preparation, const InstallTree &tree)
    {
        return {QStringLiteral("-c"), preparation, tree.path("bin/PXViewCertTool"),
                QStringLiteral(PX_SOURCE_DIR "/examples/server.pem")};
    }
};

void TestAppFaults::closedStreams_data()
{
    QTest::addColumn<QString>("preparation");
    for (const char *closed : {"<&-", ">&-", "2>&-", ">&- 2>&-", "<&- >&- 2>&-"})
        QTest::newRow(closed) << QLatin1String("exec \"$0\" \"$@\" ") + QLatin1String(closed);
}

void TestAppFaults::closedStreams()
{
    QFETCH(QString, preparation);
    const ViewerTree tree;
    tree.add(QStringLiteral("/bin/sh"), "bin/sh");
    Program viewer(tree, "sh", viewerAfter(preparation, tree));
    QVERIFY(!viewer.window().isEmpty());
    // Each stream leads somewhere, and nowhere that matters.
    for (const char *stream : {"0", "1", "2"}) {
        const QFileInfo link(
            QStringLiteral("/proc/%1/fd/%2").arg(viewer.id()).arg(QLatin1String(stream)));
        QVERIFY2(!link.symLinkTarget().contains(QLatin1String("socket:")),
                 qPrintable(link.symLinkTarget()));
    }
}

// What was opened to look for closed ones is not kept.
void TestAppFaults::openStreamsStayAlone()
{
    const auto lowestFree = [] {
        const FileDescriptor opened(::open("/dev/null", O_RDWR | O_CLOEXEC));
        return int(opened);
    };
    const int before = lowestFree();
    QVERIFY(before >= 0);
    descriptors::fillStandardStreams();
    QCOMPARE(lowestFree(), before);
}

void TestAppFaults::fewDescriptors_data()
{
    QTest::addColumn<int>("limit");
    // Three are open at least, and a few more may be handed down.
    for (const int limit : {8, 12, descriptors::kNeeded + 2, descriptors::kNeeded + 10})
        QTest::newRow(qPrintable(QString::number(limit))) << limit;
}

// It shows its window, or says why not and ends of its own will.
void TestAppFaults::fewDescriptors()
{
    QFETCH(int, limit);
    const ViewerTree tree;
    tree.add(QStringLiteral("/bin/sh"), "bin/sh");
    Program viewer(
        tree, "sh",
        viewerAfter(QStringLiteral("ulimit -n %1; exec \"$0\" \"$@\"").arg(limit), tree));
    if (limit > descriptors::kNeeded + 2) {
        QVERIFY(!viewer.window().isEmpty());
        return;
    }
    QCOMPARE(viewer.end(), 1);
    QVERIFY(viewer.says("too few file descriptors are left"));
}

QTEST_GUILESS_MAIN(TestAppFaults)
#include "tst_app_faults.moc"
