#include "QuickView.h"

#include <memory>

namespace {
std::unique_ptr<QuickView>& instanceSlot()
{
    static std::unique_ptr<QuickView> instance;
    return instance;
}
} // namespace

QuickView* QuickView::TheInstance()
{
    auto& slot = instanceSlot();
    if (!slot)
        slot.reset(new QuickView);
    return slot.get();
}

void QuickView::resetInstance()
{
    instanceSlot().reset();
}

QuickView::QuickView()
    : m_initialised(Init())
{
}

// The case-file reader needs no preparation.
bool QuickView::Init()
{
    return true;
}

bool QuickView::setFile(const std::string& path)
{
    m_loaded = m_initialised && m_info.readFile(path);
    return m_loaded;
}

std::string QuickView::getItem(const std::string& key) const
{
    return m_loaded ? m_info.getStringValue(key) : std::string();
}
