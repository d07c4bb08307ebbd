#include "util/plain_ini.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <QLatin1String>

namespace {

constexpr QChar kSlash('/');

QLatin1String latin1(std::string_view name)
{
    return QLatin1String(name.data(), static_cast<int>(name.size()));
}

bool contains(std::string_view text, char c)
{
    return text.find(c) != std::string_view::npos;
}

// What stands for itself wherever it is written.
constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._";

constexpr std::array<bool, 256> plainOctets()
{
    std::array<bool, 256> plain = {};
    for (const char c : kPlain)
        plain[static_cast<unsigned char>(c)] = true;
    return plain;
}

bool isPlainChar(char c)
{
    static constexpr std::array<bool, 256> kIsPlain = plainOctets();
    return kIsPlain[static_cast<unsigned char>(c)];
}

bool isPlainName(std::string_view name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), isPlainChar);
}

// A plain text: in quotes anything but what is escaped or means a type, else a name.
bool takePlainText(std::string_view &text)
{
    constexpr char kQuote = '"';
    if (text.size() < 2 || text.front() != kQuote)
        return isPlainName(text);
    if (text.back() != kQuote)
        return false;
    text = text.substr(1, text.size() - 2);
    const bool isTyped = !text.empty() && text.front() == '@';
    return !isTyped && !contains(text, kQuote) && !contains(text, '\\') && !contains(text, '\0');
}

// The first piece of the text up to the character, which is taken away with it.
std::string_view takeUpTo(char end, std::string_view &text)
{
    const std::string_view piece = text.substr(0, text.find(end));
    text.remove_prefix(std::min(piece.size() + 1, text.size()));
    return piece;
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

// Without marks of the byte order, and without replacements, which what is no UTF-8 becomes. In
// pieces, of whole lines, for memory's sake.
bool isPlainUtf8(const QByteArray &content)
{
    constexpr int kPiece = 16 * 1024;
    using Place = decltype(content.size());
    bool isPlain = !content.startsWith("\xEF\xBB\xBF");
    for (Place from = 0; isPlain && from < content.size();) {
        const Place line = content.indexOf('\n', from + kPiece);
        const Place end = line < 0 ? content.size() : line;
        const QString piece = QString::fromUtf8(content.constData() + from, end - from);
        isPlain =
            !piece.contains(QChar::ByteOrderMark) && !piece.contains(QChar::ReplacementCharacter);
        from = end;
    }
    return isPlain;
}

} // namespace

bool PlainIni::read(const QByteArray &content)
{
    if (!isPlainUtf8(content))
        return false;
    m_content = content;
    Section *section = nullptr;
    std::string_view rest(m_content.constData(), static_cast<std::size_t>(m_content.size()));
    while (!rest.empty()) {
        if (!readLine(takeUpTo('\n', rest), section))
            return false;
    }
    return true;
}

// False when the line is not plain: it says nothing, or heads a section, or is a name, an equals
// sign and a plain text below one.
bool PlainIni::readLine(std::string_view line, Section *&section)
{
    if (line.empty())
        return true;
    if (line.front() == ';')
        return !contains(line, '\r');
    if (line.front() == '[' && line.back() == ']') {
        const std::string_view name = line.substr(1, line.size() - 2);
        section = &sectionNamed(name);
        return isPlainName(name) &&
               latin1(name).compare(QLatin1String("General"), Qt::CaseInsensitive) != 0;
    }
    if (!section || !contains(line, '='))
        return false;
    const std::string_view key = takeUpTo('=', line);
    m_longestKey = std::max(m_longestKey, key.size());
    section->entries.push_back({key, line, QString()});
    return isPlainName(key) && takePlainText(section->entries.back().text);
}

PlainIni::Section &PlainIni::sectionNamed(std::string_view name)
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
    const auto named = std::find_if(m_sections.begin(), m_sections.end(), [&](const Section &each) {
        return section == latin1(each.name);
    });
    if (named == m_sections.end())
        return nullptr;
    if (named->places.empty()) {
        named->places.reserve(named->entries.size());
        for (std::size_t i = 0; i < named->entries.size(); ++i)
            named->places[named->entries[i].key] = i;
    }
    const auto found = named->places.find(asOctets(key));
    return found == named->places.end() ? nullptr : &named->entries[found->second];
}

// The key as it would stand in the file; an empty one, which no file has, when none has it.
std::string_view PlainIni::asOctets(QStringView key)
{
    m_asked.clear();
    if (static_cast<std::size_t>(key.size()) > m_longestKey)
        return m_asked;
    m_asked.resize(static_cast<std::size_t>(key.size()));
    std::transform(key.begin(), key.end(), m_asked.begin(), [](QChar c) { return c.toLatin1(); });
    return m_asked;
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
        entry->value = QString::fromUtf8(entry->text.data(), static_cast<int>(entry->text.size()));
    return entry->value;
}
