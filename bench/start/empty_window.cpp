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
    (new QLabel(QStringLiteral("Label"), general))->setGeometry(50, 20, 101, 21);
    (new QPlainTextEdit(general))->setGeometry(10, 60, 381, 211);
    (new QPlainTextEdit(general))->setGeometry(10, 290, 381, 231);
    tabs->addTab(general, QStringLiteral("General"));
    auto *details = new QWidget;
    (new QComboBox(details))->setGeometry(80, 18, 181, 21);
    (new QTableWidget(0, 2, details))->setGeometry(10, 60, 381, 251);
    (new QPlainTextEdit(details))->setGeometry(10, 320, 381, 201);
    tabs->addTab(details, QStringLiteral("Details"));
    (new QToolButton(&window))->setGeometry(371, 17, 45, 29);
    (new QPushButton(QStringLiteral("Close"), &window))->setGeometry(304, 637, 92, 30);
    window.show();
    return QApplication::exec();
}
