#pragma once

#include <QWidget>

/// A frame around the control that has the focus, drawn while the window is used by keyboard: the
/// skin's style sheets leave most controls without a mark of their own.
class FocusMark : public QWidget
{
    Q_OBJECT

public:
    /// `window` owns the mark.
    explicit FocusMark(QWidget *window);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void follow(QWidget *control);
};
