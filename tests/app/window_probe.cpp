// window_probe [ENCODING]: builds the window and says on standard output what it shows without a
// certificate, one "name=text" a line, in UTF-8. ENCODING stands for that of the locale, where the
// toolkit knows any but UTF-8.

#include "app/mainwindow.h"
#include "app/text_box.h"

#include <cstdio>
#include <QApplication>
#include <QComboBox>
#include <QFont>
#include <QLabel>
#include <QTabWidget>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

namespace {

void say(const char *name, const QString &text)
{
    std::printf("%s=%s\n", name, text.toUtf8().constData());
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    if (argc > 1)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(argv[1]));
#endif
    const MainWindow window;
    say("title", window.windowTitle());
    say("caption", window.findChild<QLabel *>(QStringLiteral("titileCaption"))->text());
    auto *tabs = window.findChild<QTabWidget *>();
    say("tab", tabs->tabText(0));
    say("tab", tabs->tabText(1));
    auto *selector = window.findChild<QComboBox *>();
    for (int i = 0; i < selector->count(); ++i)
        say("entry", selector->itemText(i));
    say("selector", selector->accessibleName());
    say("spoken",
        window.findChild<TextBox *>(QStringLiteral("plainTextEdit_normal"))->accessibleName());
    const QStringList fonts = QFont::substitutes(QStringLiteral("Microsoft YaHei"));
    say("font", fonts.value(0).toLower()); // the toolkit may have lowered it
    return 0;
}
