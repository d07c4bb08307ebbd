#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The texts of an INI file in UTF-8 that is as plain as the shipped one, exactly as `QSettings`
/// reads them: that takes milliseconds for what is done here in tenths. A plain file has comments,
/// sections, and texts that are quoted and hold nothing that is escaped.
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
        QStringView key; ///< as are the other views, a part of `m_content`
        QStringView text;
        QString value; ///< the text once it was asked for
    };
    struct Section
    {
        QStringView name;
        std::vector<Entry> entries; ///< of equal keys the last counts
        /// The places of the entries by key; empty until somebody asks.
        std::unordered_map<std::u16string_view, std::size_t> places;
    };

    bool readLine(QStringView line, Section *&section);
    Section &sectionNamed(QStringView name);
    Entry *find(QStringView section, QStringView key);

    QString m_content;
    std::vector<Section> m_sections;
};
