#include "tests/app/widgets.h"
#include "tests/support/message_recorder.h"

#include <cstdlib>
#include <new>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QTest>

namespace {

bool fails = false; // every `new`, until somebody is told

} // namespace

void *operator new(std::size_t size)
{
    void *memory = fails ? nullptr : std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

void *operator new(std::size_t size, const std::nothrow_t & /*tag*/) noexcept
{
    return fails ? nullptr : std::malloc(size);
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

namespace {

// Notes whether it was told that memory ran out, after which there is some again.
class Shortage
{
public:
    Shortage()
    {
        told = false;
        m_previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
                told = told || text == QLatin1String("there is not enough memory");
                fails = false;
            });
    }
    ~Shortage() { qInstallMessageHandler(m_previous); }
    Shortage(const Shortage &) = delete;
    Shortage &operator=(const Shortage &) = delete;

    static bool told;

private:
    QtMessageHandler m_previous = nullptr;
};

bool Shortage::told = false;

// A cell after whose text there is no more memory.
class LastCell : public QTableWidgetItem
{
public:
    using QTableWidgetItem::QTableWidgetItem;
    QVariant data(int role) const override
    {
        QVariant data = QTableWidgetItem::data(role);
        fails = isArmed;
        return data;
    }

    static bool isArmed;
};

bool LastCell::isArmed = false;

std::vector<detail_node> fewRows()
{
    return {row("one", "1", "full 1", 0), row("two", "2", "full 2", 1)};
}

} // namespace

/// Where memory runs out while the window lays out texts it shows nothing, and lives on.
class TestAppExhaustion : public QObject
{
    Q_OBJECT

private slots:
    void aClickShowsNothing();
    void theSelectorShowsNothing();
};

void TestAppExhaustion::aClickShowsNothing()
{
    MainWindow window;
    window.result_detail(fewRows());
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    auto *box = child<QPlainTextEdit>(window, "plainTextEdit_detail_2");
    table->setItem(0, 0, new LastCell(QStringLiteral("one")));
    const Shortage shortage;
    LastCell::isArmed = true;
    window.on_tableWidget_detailinfo_clicked(table->model()->index(0, 0));
    LastCell::isArmed = false;
    QVERIFY(Shortage::told);
    QCOMPARE(box->toPlainText(), QString());
    window.on_tableWidget_detailinfo_clicked(table->model()->index(1, 0));
    QCOMPARE(box->toPlainText(), QStringLiteral("full 2"));
}

void TestAppExhaustion::theSelectorShowsNothing()
{
    MainWindow window;
    window.result_detail(fewRows());
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    auto *selector = child<QComboBox>(window, "comboBox_selection");
    const Shortage shortage;
    {
        const QObject listener;
        connect(table->model(), &QAbstractItemModel::rowsInserted, &listener, [] { fails = true; });
        selector->setCurrentIndex(1);
    }
    QVERIFY(Shortage::told);
    QCOMPARE(table->rowCount(), 0);
    selector->setCurrentIndex(0);
    QCOMPARE(table->rowCount(), 2);
}

QTEST_MAIN(TestAppExhaustion)
#include "tst_app_exhaustion.moc"
