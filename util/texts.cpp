#include "util/texts.h"

#include "util/c_language.h"

#include <algorithm>
#include <QVarLengthArray>

namespace texts {
namespace {

// A text's UTF-16, without memory from the heap for what is as short as a key.
class Utf16
{
public:
    explicit Utf16(QLatin1String text)
        : m_units(text.size())
    {
        std::transform(text.begin(), text.end(), m_units.begin(),
                       [](char c) { return static_cast<unsigned char>(c); });
    }

    operator QStringView() const { return {m_units.constData(), m_units.size()}; }

private:
    QVarLengthArray<char16_t, 128> m_units;
};

} // namespace

QString raw(const QString &key)
{
    return c_language::GetLangPtr()->GetValue(key);
}

QString raw(QLatin1String key)
{
    const QString text = c_language::GetLangPtr()->text(Utf16(key));
    return text.isEmpty() ? QString(key) : text;
}

QString shown(const QString &key)
{
    return throughLocal8Bit(raw(key));
}

QString shown(QLatin1String key)
{
    return throughLocal8Bit(raw(key));
}

QString throughLocal8Bit(const QString &text)
{
    const QByteArray local = text.toLocal8Bit();
    const QString held = QString::fromLocal8Bit(local.constData(), local.size());
    return held == text ? text : held; // a million rows of one name then share it
}

QString nameOfIdentifier(const QString &dotted)
{
    const QString name = c_language::GetLangPtr()->nameOfIdentifier(dotted);
    return name.isEmpty() ? dotted : name;
}

QString nameOfIdentifier(QLatin1String dotted)
{
    const QString name = c_language::GetLangPtr()->nameOfIdentifier(Utf16(dotted));
    return name.isEmpty() ? QString(dotted) : name;
}

} // namespace texts
