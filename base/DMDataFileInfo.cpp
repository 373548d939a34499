#include "DMDataFileInfo.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"
#include "StringFunctions.h"

bool DMDataFileInfo::readFile(const std::string& path)
{
    m_head.clear();
    // A FIFO or device planted among the case files is refused, not read.
    std::optional<std::string> head = RegularFile::readHead(CrossPlatformApi::fileSystemEncoding(path), scannedSize);
    if (!head)
        return false;
    m_head = std::move(*head);
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
