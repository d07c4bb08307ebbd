#include "cert/c_pxcert.h"
#include "tests/cert/parsed.h"

#include <cerrno>
#include <cstddef>
#include <QTest>

namespace {

thread_local long allocations = 0;
thread_local long failing = -1;    // the allocation that fails, counted from 0
thread_local bool failsOn = false; // and all that follow it

[[maybe_unused]] bool fails()
{
    const long number = allocations++;
    const bool now = failing >= 0 && (failsOn ? number >= failing : number == failing);
    if (now)
        errno = ENOMEM;
    return now;
}

} // namespace

#ifndef __SANITIZE_ADDRESS__ // which has an allocator of its own

// The C library's own, behind the ones that fail at will.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *memory, std::size_t size);

void *malloc(std::size_t __size) noexcept
{
    return fails() ? nullptr : __libc_malloc(__size);
}

void *calloc(std::size_t __nmemb, std::size_t __size) noexcept
{
    return fails() ? nullptr : __libc_calloc(__nmemb, __size);
}

void *realloc(void *__ptr, std::size_t __size) noexcept
{
    return fails() ? nullptr : __libc_realloc(__ptr, __size);
}
}

#endif

/// Where memory runs out the model shows all that it should, or says that it shows nothing.
class TestCertExhaustion : public QObject
{
    Q_OBJECT

private slots:
    void eachAllocationFails_data();
    void eachAllocationFails();
    void allFromOneOnFail_data();
    void allFromOneOnFail();

private:
    static void files();
    static void loadWithFailures(bool all);
};

void TestCertExhaustion::files()
{
    QTest::addColumn<QString>("file");
    for (const char *file : {"examples/server.pem", "examples/ca.pem", "examples/long.pem",
                             "tests/data/extensions/policies-critical.pem"})
        QTest::newRow(file) << QStringLiteral(PX_SOURCE_DIR "/") + QLatin1String(file);
}

void TestCertExhaustion::loadWithFailures(bool all)
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer's allocator can't be made to fail");
#endif
    QFETCH(QString, file);
    const QByteArray path = QFile::encodeName(file);
    Parsed expected;
    c_pxcert first(nullptr);
    expected.listenTo(first);
    QVERIFY(first.loadfile(path.constData()));
    QVERIFY(expected.rows.size() > 5);

    int loads = 0;
    int failures = 0;
    failsOn = all;
    for (bool reached = true; reached; ++loads) {
        Parsed parsed;
        c_pxcert model(nullptr);
        parsed.listenTo(model);
        allocations = 0;
        failing = loads;
        const bool loaded = model.loadfile(path.constData());
        reached = allocations > failing;
        failing = -1;
        if (!loaded) { // and nothing of it stays
            ++failures;
            parsed.blocks.clear();
            QVERIFY(model.loadfile(path.constData()));
        }
        QCOMPARE(parsed.blocks, expected.blocks);
        QCOMPARE(parsed.rows.size(), expected.rows.size());
        for (std::size_t i = 0; i < parsed.rows.size(); ++i) {
            QCOMPARE(parsed.rows[i].name, expected.rows[i].name);
            QCOMPARE(parsed.rows[i].full_value, expected.rows[i].full_value);
        }
    }
    QVERIFY2(failures > loads / 2, qPrintable(QString::number(failures)));
}

void TestCertExhaustion::eachAllocationFails_data()
{
    files();
}

void TestCertExhaustion::eachAllocationFails()
{
    loadWithFailures(false);
}

void TestCertExhaustion::allFromOneOnFail_data()
{
    files();
}

void TestCertExhaustion::allFromOneOnFail()
{
    loadWithFailures(true);
}

QTEST_GUILESS_MAIN(TestCertExhaustion)
#include "tst_cert_exhaustion.moc"
