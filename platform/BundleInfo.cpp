#include "BundleInfo.h"

#include "CrossPlatformApi.h"
#include "RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace {

// A bundle's Info.plist is a few kilobytes; a larger one is taken as broken.
constexpr std::size_t MaxInfoPlistBytes = 1024 * 1024;

std::string toLatin1(const QString& text)
{
    return text.toLatin1().toStdString();   // '?' for characters outside Latin-1
}

QString infoPlistPath(const QString& bundlePath)
{
    return bundlePath + QLatin1String("/Contents/Info.plist");
}

// The string values of the top-level dictionary of a property list; nothing
// when the file cannot be read or is not well-formed.
std::map<std::string, std::string> readInfoPlist(const QString& path)
{
    const std::optional<std::string> content = RegularFile::readWhole(QFile::encodeName(path).toStdString(), MaxInfoPlistBytes);
    if (!content)
        return {};
    QXmlStreamReader xml(QByteArray::fromStdString(*content));
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("plist"))
        return {};
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("dict"))
        return {};

    std::map<std::string, std::string> values;
    QString key;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("key")) {
            key = xml.readElementText();
            continue;
        }
        if (xml.name() == QLatin1String("string") && !key.isNull())
            values[toLatin1(key)] = toLatin1(xml.readElementText());
        else
            xml.skipCurrentElement();
        key = QString();
    }
    if (xml.hasError())
        return {};
    return values;
}

} // namespace

BundleInfo::BundleInfo(const std::string& path)
    : m_path(path)
    , m_values(readInfoPlist(infoPlistPath(CrossPlatformApi::toQString(path))))
{
}

BundleInfo BundleInfo::forPath(const std::string& path)
{
    if (path.empty())
        return BundleInfo();
    QString candidate = QDir::cleanPath(QFileInfo(CrossPlatformApi::toQString(path)).absoluteFilePath());
    for (;;) {
        if (QFileInfo(infoPlistPath(candidate)).isFile())
            return BundleInfo(toLatin1(candidate));
        const QString parent = QFileInfo(candidate).path();
        if (parent == candidate)
            return BundleInfo();
        candidate = parent;
    }
}

BundleInfo BundleInfo::at(const std::string& bundlePath)
{
    const QFileInfo folder(CrossPlatformApi::toQString(bundlePath));
    if (bundlePath.empty() || !folder.isDir())
        return BundleInfo();
    return BundleInfo(toLatin1(QDir::cleanPath(folder.absoluteFilePath())));
}

BundleInfo BundleInfo::mainBundle()
{
    return forPath(CrossPlatformApi::executablePath());
}

std::string BundleInfo::value(const std::string& key) const
{
    const auto found = m_values.find(key);
    return found == m_values.end() ? std::string() : found->second;
}

std::string mainBundleIdentifier()
{
    return BundleInfo::mainBundle().value("CFBundleIdentifier");
}

std::string mainBundlePath()
{
    return BundleInfo::mainBundle().bundlePath();
}
