#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The texts of an INI file in UTF-8 that is as plain as the shipped one, exactly as `QSettings`
/// reads them: that takes milliseconds for what is done here in tenths. A plain file has comments,
/// sections, and texts that are quoted and hold nothing that is escaped; and nowhere a mark of the
/// byte order, a replacement or what is no UTF-8.
class PlainIni
{
public:
    /// Takes the file's content. False when it is not plain: then nothing may be asked.
    bool read(const QByteArray &content);

    /// The text under `key` in `section`, where empty names between slashes don't count; an empty
    /// text when there is none. Takes no memory for a text that was asked for before.
    QString value(QStringView section, QStringView key);

private:
    struct Entry
    {
        std::string_view key;  ///< as are the other views, a part of `m_content`
        std::string_view text; ///< UTF-8
        QString value;         ///< the text once it was asked for
    };
    struct Section
    {
        std::string_view name;
        std::vector<Entry> entries; ///< of equal keys the last counts
        /// The places of the entries by key; empty until somebody asks.
        std::unordered_map<std::string_view, std::size_t> places;
    };

    bool readLine(std::string_view line, Section *&section);
    Section &sectionNamed(std::string_view name);
    Entry *find(QStringView section, QStringView key);
    std::string_view asOctets(QStringView key);

    QByteArray m_content;
    std::vector<Section> m_sections;
    std::size_t m_longestKey = 0;
    std::string m_asked; ///< the key that is looked for, in memory that stays
};
