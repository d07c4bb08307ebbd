#pragma once

#include <QTranslator>

/// Translates the window's title, the one text that the form itself keeps, by the language table:
/// the form is written in Chinese, the suite's language may be another.
class TitleTranslation : public QTranslator
{
    Q_OBJECT

public:
    /// Takes effect at once, as long as it lives.
    explicit TitleTranslation(QObject *parent);

    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override;
};
