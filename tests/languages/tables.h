#pragma once

#include <QFile>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

/// The tables of the folder languages/, read again apart from the script that makes the language
/// file of them.
namespace tables {

using Row = QHash<QString, QString>; ///< cells by column title

/// The rows of a tab-separated table.
inline QVector<Row> read(const char *name)
{
    QFile file(QStringLiteral(PX_SOURCE_DIR "/languages/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeLast();
    const QStringList titles = lines.takeFirst().split(QLatin1Char('\t'));
    QVector<Row> rows;
    for (const QString &line : qAsConst(lines)) {
        const QStringList cells = line.split(QLatin1Char('\t'));
        Row row;
        for (int i = 0; i < titles.size(); ++i)
            row.insert(titles.at(i), cells.value(i));
        rows.append(row);
    }
    return rows;
}

inline QString cell(const Row &row, const char *title)
{
    return row.value(QLatin1String(title));
}

/// The key under which the name of an identifier stands in every language's section.
inline QString keyOf(QString oid)
{
    return QStringLiteral("PXOID_") + oid.replace(QLatin1Char('.'), QLatin1Char('_'));
}

/// A text as the tables write it: with a visible sign for a blank at its ends.
inline QString text(QString cell)
{
    return cell.replace(QChar(0x2423), QLatin1Char(' '));
}

} // namespace tables
