#include "QuickView.h"

QuickView* QuickView::TheInstance()
{
    return SingletonSlot<QuickView>::instance();
}

void QuickView::resetInstance()
{
    SingletonSlot<QuickView>::reset();
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
