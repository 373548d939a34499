#include "ConfigText.h"

#include "Configuration.h"

QString configText(const char* section, const char* key, const char* defaultValue)
{
    const std::string value = cConfiguration::theInstance()->GetString(section, key, defaultValue);
    return QString::fromLatin1(value.data(), qsizetype(value.size()));
}
