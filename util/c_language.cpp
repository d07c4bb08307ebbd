#include "util/c_language.h"

#include "core/core_calls.h"
#include "core/px_core_manager.h"
#include "util/client_config.h"
#include "util/ini_table.h"

namespace {

struct LanguageCode
{
    const char *code;
    const char *section;
};

constexpr LanguageCode kLanguageCodes[] = {
    {"GBC_", "CN"},
    {"GBB_", "TW"},
    {"ENG_", "EN"},
};

constexpr const char *kDefaultSection = "CN";

QString sectionOfCode(const QString &code)
{
    for (const LanguageCode &known : kLanguageCodes) {
        if (code == QLatin1String(known.code))
            return QLatin1String(known.section);
    }
    return QLatin1String(kDefaultSection);
}

} // namespace

c_language *c_language::_lang = nullptr;

c_language *c_language::GetLangPtr()
{
    if (!_lang)
        _lang = new c_language;
    return _lang;
}

c_language::c_language()
{
    GetCoreManager();
    m_configPath = core_calls::configPath();
    m_installPath = core_calls::installPath();
    m_filePath = languageFilePath(m_fileName);
    m_identifiersPath = languageFilePath(QLatin1String(kDefaultFileName));
    LANG_SetLang();
}

void c_language::LANG_SetFileName(const QString &name)
{
    m_fileName = name.isEmpty() ? QLatin1String(kDefaultFileName) : name;
    m_filePath = languageFilePath(m_fileName);
}

void c_language::LANG_SetLang()
{
    m_section = sectionOfCode(client_config::readLanguageCode(m_configPath));
}

bool c_language::GetValue(const QString &key, QString &value) const
{
    value = text(key);
    return !value.isEmpty();
}

QString c_language::GetValue(const QString &key) const
{
    QString value;
    return GetValue(key, value) ? value : key;
}

QString c_language::text(QStringView key) const
{
    return ini_table::lookup(m_filePath, m_section, key);
}

QString c_language::nameOfIdentifier(QStringView dotted) const
{
    return ini_table::lookup(m_identifiersPath, u"OID", dotted);
}

QString c_language::section() const
{
    return m_section;
}

QString c_language::languageFilePath(const QString &fileName) const
{
    return m_installPath + QLatin1String("/languages/") + fileName;
}
