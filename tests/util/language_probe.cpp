// language_probe KEY...: prints the section in force, where the language file lies, and the text
// of each key as it is shown.

#include "util/c_language.h"
#include "util/texts.h"

#include <cstdio>
#include <QCoreApplication>

namespace {

void say(const QString &text)
{
    std::printf("%s\n", text.toUtf8().constData());
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    c_language *language = c_language::GetLangPtr();
    language->LANG_SetFileName(QString());
    say(language->section());
    say(language->languageFilePath(QStringLiteral("any.ini")));
    const QStringList keys = QCoreApplication::arguments().mid(1);
    for (const QString &key : keys)
        say(texts::shown(key));
    return 0;
}
