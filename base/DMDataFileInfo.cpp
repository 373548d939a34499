#include "DMDataFileInfo.h"

#include "CrossPlatformApi.h"
#include "StringFunctions.h"

#include <fstream>

bool DMDataFileInfo::readFile(const std::string& path)
{
    m_head.clear();
    std::ifstream file(CrossPlatformApi::fileSystemEncoding(path), std::ios::binary);
    if (!file)
        return false;
    m_head.resize(scannedSize);
    file.read(m_head.data(), std::streamsize(scannedSize));
    m_head.resize(std::size_t(file.gcount()));
    std::string ignored;
    return findValue(keyPerson, ignored) || findValue(keyComment, ignored);
}

std::string DMDataFileInfo::getStringValue(const std::string& key) const
{
    std::string value;
    return findValue(key, value) ? value : std::string("?");
}

bool DMDataFileInfo::findValue(const std::string& key, std::string& value) const
{
    std::string::size_type outerStart, outerEnd, innerStart, innerEnd;
    if (!StringFunctions::getXmlElementLocation(m_head, key, outerStart, outerEnd, innerStart,
                                                innerEnd))
        return false;
    value = m_head.substr(innerStart, innerEnd - innerStart);
    return true;
}
