// bench_window --rows COUNT       the window with so many rows, each with a name of its own
// bench_window --same-rows COUNT  the same with one name for all
//
// Prints, in milliseconds up to the next picture: "shown" (all up to the first), "selected" (a
// change of the selector), "paged" (Page Down in the table) and "clicked" (on the first row); last
// "peak" in kilobytes.

#include "app/look/program_look.h"
#include "app/mainwindow.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <QApplication>
#include <QByteArray>
#include <QComboBox>
#include <QKeyEvent>
#include <QTableWidget>
#include <QTabWidget>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Standard output as it was: what the libraries print there is kept out of it.
FILE *results = nullptr;

// What the toolkit says on the way would be measured too, with the terminal's speed.
void ignore(QtMsgType /*type*/, const QMessageLogContext & /*where*/, const QString & /*text*/) {}

template <typename Action>
void measure(const char *name, const Action &action)
{
    const auto begin = std::chrono::steady_clock::now();
    action();
    QApplication::processEvents();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    std::fprintf(results, "%s %.2f\n", name, time.count());
}

std::vector<detail_node> rowsOf(int count, bool sameName)
{
    std::vector<detail_node> rows;
    for (int i = 0; i < count; ++i) {
        const QString number = QString::number(i);
        rows.push_back({QStringLiteral("1.3.6.1.4.1.") + (sameName ? QStringLiteral("0") : number),
                        QStringLiteral("value ") + number, QStringLiteral("full value ") + number,
                        i % 2});
    }
    return rows;
}

template <typename Widget>
Widget *child(MainWindow &window, const char *name)
{
    auto *widget = window.findChild<Widget *>(QLatin1String(name));
    if (!widget)
        qFatal("there is no %s", name);
    return widget;
}

} // namespace

int main(int argc, char **argv)
{
    qInstallMessageHandler(ignore);
    const int output = ::dup(STDOUT_FILENO);
    results = output < 0 ? nullptr : ::fdopen(output, "w");
    if (argc != 3 || !results || !std::freopen("/dev/null", "w", stdout))
        return 2;
    QApplication application(argc, argv);
    program_look::dress();
    MainWindow window;
    auto *table = child<QTableWidget>(window, "tableWidget_detailinfo");
    auto *selector = child<QComboBox>(window, "comboBox_selection");
    child<QTabWidget>(window, "tabWidget")->setCurrentIndex(1);
    measure("shown", [&] {
        window.result_detail(
            rowsOf(QByteArray(argv[2]).toInt(), std::strcmp(argv[1], "--same-rows") == 0));
        window.show();
    });
    measure("selected", [&] { selector->setCurrentIndex(1); });
    selector->setCurrentIndex(0);
    QApplication::processEvents();
    table->setFocus();
    measure("paged", [&] {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
        QApplication::sendEvent(table, &press);
        QKeyEvent again(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
        QApplication::sendEvent(table, &again);
    });
    measure("clicked", [&] {
        if (table->rowCount() > 0)
            window.on_tableWidget_detailinfo_clicked(table->model()->index(0, 0));
    });
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::fprintf(results, "peak %ld\n", usage.ru_maxrss);
    return 0;
}
