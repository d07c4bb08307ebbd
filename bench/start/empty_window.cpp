// empty_window        a window of the viewer's size with the same kinds of widgets, all empty, as
//                     the toolkit comes
// empty_window --lean without the OpenGL that the toolkit looks for: what a start costs at least

#include <cstring>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTabWidget>
#include <QToolButton>

namespace {

void place(QWidget *widget, const QRect &area)
{
    widget->setGeometry(area);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--lean") == 0)
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    QApplication application(argc, argv);
    QMainWindow window;
    window.setFixedSize(436, 697);
    auto *tabs = new QTabWidget(&window);
    tabs->setGeometry(10, 60, 411, 571);
    auto *general = new QWidget;
    place(new QLabel(QStringLiteral("Label"), general), {50, 20, 101, 21});
    place(new QPlainTextEdit(general), {10, 60, 381, 211});
    place(new QPlainTextEdit(general), {10, 290, 381, 231});
    tabs->addTab(general, QStringLiteral("General"));
    auto *details = new QWidget;
    place(new QComboBox(details), {80, 18, 181, 21});
    place(new QTableWidget(0, 2, details), {10, 60, 381, 251});
    place(new QPlainTextEdit(details), {10, 320, 381, 201});
    tabs->addTab(details, QStringLiteral("Details"));
    place(new QToolButton(&window), {371, 17, 45, 29});
    place(new QPushButton(QStringLiteral("Close"), &window), {304, 637, 92, 30});
    window.show();
    return QApplication::exec();
}
