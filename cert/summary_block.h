#pragma once

#include <QString>
#include <vector>

/// One block of the summary: its text, and which of its line feeds the program itself wrote, in
/// their order. The others stand in the certificate's values.
struct SummaryBlock
{
    QString text;
    std::vector<bool> ownLineFeeds;

    /// Appends words of the program's, and a value of the certificate's.
    void say(const QString &words) { append(words, true); }
    void quote(const QString &value) { append(value, false); }

private:
    void append(const QString &more, bool isOwn)
    {
        text += more;
        ownLineFeeds.insert(ownLineFeeds.end(),
                            static_cast<std::size_t>(more.count(QLatin1Char('\n'))), isOwn);
    }
};
