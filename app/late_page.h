#pragma once

#include <functional>
#include <QWidget>

/// A page that is not the first one shown: what it takes to be seen, it may get as late as that.
class LatePage : public QWidget
{
public:
    using QWidget::QWidget;

    /// `prepare` is called once, when the page is about to be shown for the first time.
    void beforeFirstShown(std::function<void()> prepare);

    void setVisible(bool visible) override;

private:
    std::function<void()> m_prepare;
};
