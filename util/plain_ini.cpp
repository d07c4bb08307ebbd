#include "util/plain_ini.h"

#include <algorithm>
#include <QLatin1String>

namespace {

constexpr QChar kSlash('/');

std::u16string_view unitsOf(QStringView text)
{
    return {text.utf16(), static_cast<std::size_t>(text.size())};
}

// What stands for itself wherever it is written.
bool isPlainChar(QChar c)
{
    const ushort code = c.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
           (code >= '0' && code <= '9') || code == '.' || code == '_';
}

bool isPlainName(QStringView name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isPlainChar);
}

// A plain text: in quotes anything but what is escaped, replaced or means a type, else a name.
bool takePlainText(QStringView &text)
{
    constexpr QChar kQuote('"');
    if (text.size() < 2 || text.front() != kQuote)
        return isPlainName(text);
    if (text.back() != kQuote)
        return false;
    text = text.mid(1, text.size() - 2);
    return !text.startsWith(QLatin1Char('@')) &&
           std::none_of(text.begin(), text.end(), [](QChar c) {
               return c == QLatin1Char('"') || c == QLatin1Char('\\') || c.isNull() ||
                      c == QChar::ReplacementCharacter || c == QChar::ByteOrderMark;
           });
}

// The names of "section/key" as `QSettings` takes keys: what stands between slashes, empty ones
// left out. `count` receives how many there are, as far as three.
void splitNames(QStringView section, QStringView key, QStringView (&names)[3], int &count)
{
    count = 0;
    for (QStringView rest : {section, key}) {
        while (!rest.isEmpty() && count < 3) {
            const auto slash = rest.indexOf(kSlash);
            const QStringView name = slash < 0 ? rest : rest.left(slash);
            if (!name.isEmpty())
                names[count++] = name;
            rest = rest.mid(slash < 0 ? rest.size() : slash + 1);
        }
    }
}

} // namespace

bool PlainIni::read(const QByteArray &content)
{
    if (content.startsWith("\xEF\xBB\xBF"))
        return false;
    m_content = QString::fromUtf8(content.constData(), content.size());
    Section *section = nullptr;
    QStringView rest(m_content);
    while (!rest.isEmpty()) {
        const auto end = rest.indexOf(QLatin1Char('\n'));
        if (!readLine(end < 0 ? rest : rest.left(end), section))
            return false;
        rest = rest.mid(end < 0 ? rest.size() : end + 1);
    }
    return true;
}

// False when the line is not plain: it says nothing, or heads a section, or is a name, an equals
// sign and a plain text below one.
bool PlainIni::readLine(QStringView line, Section *&section)
{
    if (line.isEmpty())
        return true;
    if (line.front() == QLatin1Char(';'))
        return !line.contains(QLatin1Char('\r'));
    if (line.front() == QLatin1Char('[') && line.back() == QLatin1Char(']')) {
        const QStringView name = line.mid(1, line.size() - 2);
        section = &sectionNamed(name);
        return isPlainName(name) &&
               name.compare(QLatin1String("General"), Qt::CaseInsensitive) != 0;
    }
    const auto equals = line.indexOf(QLatin1Char('='));
    if (!section || equals < 0)
        return false;
    const QStringView key = line.left(equals);
    QStringView text = line.mid(equals + 1);
    section->entries.push_back({key, text, QString()});
    return isPlainName(key) && takePlainText(section->entries.back().text);
}

PlainIni::Section &PlainIni::sectionNamed(QStringView name)
{
    const auto found = std::find_if(m_sections.begin(), m_sections.end(),
                                    [&](const Section &section) { return section.name == name; });
    if (found != m_sections.end())
        return *found;
    m_sections.push_back({name, {}, {}});
    return m_sections.back();
}

PlainIni::Entry *PlainIni::find(QStringView section, QStringView key)
{
    const auto named = std::find_if(m_sections.begin(), m_sections.end(),
                                    [&](const Section &each) { return each.name == section; });
    if (named == m_sections.end())
        return nullptr;
    if (named->places.empty()) {
        named->places.reserve(named->entries.size());
        for (std::size_t i = 0; i < named->entries.size(); ++i)
            named->places[unitsOf(named->entries[i].key)] = i;
    }
    const auto found = named->places.find(unitsOf(key));
    return found == named->places.end() ? nullptr : &named->entries[found->second];
}

QString PlainIni::value(QStringView section, QStringView key)
{
    Entry *entry = find(section, key);
    if (!entry && (section.contains(kSlash) || key.contains(kSlash))) {
        QStringView names[3];
        int count = 0;
        splitNames(section, key, names, count);
        entry = count == 2 ? find(names[0], names[1]) : nullptr;
    }
    if (!entry)
        return {};
    if (entry->value.isNull())
        entry->value = entry->text.toString();
    return entry->value;
}
