#pragma once

#include "app/look/visible_text.h"

#include <QPlainTextEdit>
#include <vector>

/// A read-only box that shows texts from a certificate, which may be long, and may be made to
/// mislead: what misleads is painted as a mark, and copied as the text has it.
class TextBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// What the texts of one call may take up, so that they are laid out at once and in little
    /// memory: an ASCII character counts 1, the end of a line `kCostOfLine`, and any other
    /// character, of whatever script and however many marks stand on it, `kCostOfOthers`.
    static constexpr int kMostShown = 512 * 1024;
    static constexpr int kCostOfLine = 8;
    static constexpr int kCostOfOthers = 32;

    explicit TextBox(QWidget *parent = nullptr);

    void clearTexts();

    /// From now on each line begins left, whatever the direction of its text.
    void beginLinesLeft();

    /// Appends the texts, each as paragraphs of its own, behind what stands, and shows the
    /// beginning of all. Where they don't fit into `kMostShown` together, each has an equal share
    /// of the room that those before it left; of a longer one the beginning stands there, with "…"
    /// behind it, as behind the last of more texts than there is room for.
    void appendTexts(const std::vector<QString> &texts);

    /// The same for one text in which only those line feeds end a line for which `endsLine` is
    /// true, in their order; those behind its end do, too. The others are painted as marks.
    void appendLines(const QString &text, const std::vector<bool> &endsLine);

protected:
    void showEvent(QShowEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;

private:
    void append(const std::vector<visible_text::Piece> &pieces);

    bool m_wasShown = false;
};
