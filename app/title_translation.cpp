#include "app/title_translation.h"

#include "util/c_language.h"
#include "util/text_keys.h"

#include <cstring>
#include <QCoreApplication>

TitleTranslation::TitleTranslation(QObject *parent)
    : QTranslator(parent)
{
    QCoreApplication::installTranslator(this);
}

QString TitleTranslation::translate(const char *context, const char *sourceText,
                                    const char * /*disambiguation*/, int /*n*/) const
{
    const c_language *language = c_language::GetLangPtr();
    if (std::strcmp(context, "MainWindow") != 0 || std::strcmp(sourceText, "证书查看器") != 0 ||
        language->section() == QLatin1String("CN"))
        return {};
    QString title;
    language->GetValue(text_keys::kWindowTitle, title);
    return title; // an empty one leaves the form's
}
