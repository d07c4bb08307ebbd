#pragma once

#include <QFile>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

/// What is looked at, and the lines that it shows.
using Expectations = QVector<QPair<QString, QStringList>>;

/// One case of a topic's cases.txt, whose form tests/data/README.md tells.
struct Case
{
    QString name;
    Expectations expected;
};

/// The cases of tests/data/<topic>; empty when the file cannot be read. What comes first is looked
/// at as `first` unless an "@" says otherwise.
inline QVector<Case> casesOf(const QString &topic, const QString &first)
{
    QVector<Case> cases;
    QFile file(QStringLiteral(PX_TEST_DATA "/%1/cases.txt").arg(topic));
    file.open(QIODevice::ReadOnly);
    const QStringList parts =
        QString::fromUtf8(file.readAll()).split(QStringLiteral("\n== ")).mid(1);
    for (const QString &part : parts) {
        QStringList lines = part.split(QLatin1Char('\n'));
        Case one{lines.takeFirst(), {}};
        for (const QString &line : qAsConst(lines)) {
            if (line.startsWith(QLatin1String("@ ")))
                one.expected.append({line.mid(2), {}});
            else if (!line.isEmpty() && !line.startsWith(QLatin1Char(':'))) {
                if (one.expected.isEmpty())
                    one.expected.append({first, {}});
                one.expected.last().second << line;
            }
        }
        cases << one;
    }
    return cases;
}

/// Lines as a case spells them: each behind "> ".
inline QStringList spelledLines(const QStringList &lines)
{
    QStringList all;
    for (const QString &line : lines)
        all << (line.isEmpty() ? QStringLiteral(">") : QStringLiteral("> ") + line);
    return all;
}

/// Texts as a case spells them: their lines, and "--" between two texts.
inline QStringList spelled(const QStringList &texts)
{
    QStringList all;
    for (const QString &text : texts) {
        if (!all.isEmpty())
            all << QStringLiteral("--");
        all << spelledLines(text.split(QLatin1Char('\n')));
    }
    return all;
}
