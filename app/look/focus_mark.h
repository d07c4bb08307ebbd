#pragma once

#include <QWidget>

/// A frame around the control that has the focus, and around the current tab of a tab bar, drawn
/// from the start until the mouse is used, and again as soon as a key is: the skin's style sheets
/// leave most controls without a mark of their own.
class FocusMark : public QWidget
{
    Q_OBJECT

public:
    /// `window` owns the mark.
    explicit FocusMark(QWidget *window);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void follow();

    bool m_wanted = true; ///< the keyboard was used last
};
