#include "app/late_page.h"

#include <utility>

void LatePage::beforeFirstShown(std::function<void()> prepare)
{
    m_prepare = std::move(prepare);
}

void LatePage::setVisible(bool visible)
{
    if (visible && m_prepare)
        std::exchange(m_prepare, nullptr)();
    QWidget::setVisible(visible);
}
