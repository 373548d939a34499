#include "VersionInfo.h"

#include "CrossPlatformApi.h"
#include "StringFunctions.h"
#include "ValidatedBuffer.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>

namespace {

const char szVersionMask[] = "%d.%d.%d.%d";

struct VersionField
{
    const char* field;
    const char* bundleKey;
    bool buildForm;
};

const VersionField versionFields[] = {
    { "LegalCopyright", "NSHumanReadableCopyright", false },
    { "ProductName", "CFBundleName", false },
    { "Version", "CFBundleVersion", false },
    { "ProductVersion", "CFBundleVersion", true },
    { "ProductBuildVersion", "CFBundleVersion", true },
};

// "a.b.c.d" gives "Build-c": the part between the last two dots.
std::string buildForm(const std::string& version)
{
    std::string rest = version.substr(0, version.rfind('.'));
    const std::string::size_type dot = rest.rfind('.');
    if (dot != std::string::npos)
        rest.erase(0, dot + 1);
    return "Build-" + rest;
}

int compareNumber(int a, int b)
{
    return a < b ? -1 : (a > b ? 1 : 0);
}

void readVersion(const std::string& text, int& a, int& b, int& c, int& d)
{
    a = b = c = d = 0;
    std::sscanf(text.c_str(), szVersionMask, &a, &b, &c, &d);
}

} // namespace

VersionInfo::VersionInfo(const char* exeName)
{
    setExeName(exeName);
}

void VersionInfo::setExeName(const char* exeName)
{
    m_exeName = exeName ? exeName : "";
    m_bundleRead = false;
}

const BundleInfo& VersionInfo::bundle()
{
    if (!m_bundleRead) {
        m_bundle = BundleInfo::forPath(m_exeName.empty() ? CrossPlatformApi::executablePath()
                                                         : m_exeName);
        m_bundleRead = true;
    }
    return m_bundle;
}

std::string VersionInfo::getStringFileInfo(const char* field)
{
    if (!field)
        return std::string();
    for (const VersionField& entry : versionFields) {
        if (std::strcmp(entry.field, field) != 0)
            continue;
        const std::string value = bundle().value(entry.bundleKey);
        return entry.buildForm && !value.empty() ? buildForm(value) : value;
    }
    return std::string();
}

std::string VersionInfo::getProductName()
{
    return getStringFileInfo("ProductName");
}

std::string VersionInfo::getCopyright()
{
    return getStringFileInfo("LegalCopyright");
}

std::string VersionInfo::getProductVersion()
{
    return getStringFileInfo("ProductVersion");
}

std::string VersionInfo::getProductBuild()
{
    return getStringFileInfo("ProductBuildVersion");
}

bool VersionInfo::hasInfo()
{
    return !getProductName().empty();
}

bool VersionInfo::getFileVersion(int& a, int& b, int& c, int& d)
{
    std::string version = getStringFileInfo("Version");
    if (version.empty())
        return false;
    StringFunctions::replaceAllOf(version, ".", ' ');
    std::istringstream numbers(version);
    numbers >> a >> b >> c >> d;
    return true;
}

std::string VersionInfo::getFileVersionAsString()
{
    int a = 0, b = 0, c = 0, d = 0;
    return getFileVersion(a, b, c, d) ? asString(a, b, c, d) : std::string();
}

bool VersionInfo::getProductVersion(int&, int&, int&, int&)
{
    std::cout << "Not yet implemented: VersionInfo::getProductVersion()" << std::endl;
    return false;
}

std::string VersionInfo::getProductVersionAsString()
{
    int a = 0, b = 0, c = 0, d = 0;
    return getProductVersion(a, b, c, d) ? asString(a, b, c, d) : std::string();
}

bool VersionInfo::getFixedFileVersion()
{
    std::cout << "Not yet implemented: VersionInfo::getFixedFileVersion()" << std::endl;
    return false;
}

std::string VersionInfo::asString(int a, int b, int c, int d)
{
    ValidatedBuffer buffer(4096);
    std::snprintf(buffer.get(), buffer.getSize(), szVersionMask, a, b, c, d);
    return std::string(buffer.getConst());
}

int VersionInfo::compare(int a1, int b1, int c1, int d1, int a2, int b2, int c2, int d2)
{
    if (const int result = compareNumber(a1, a2))
        return result;
    if (const int result = compareNumber(b1, b2))
        return result;
    if (const int result = compareNumber(c1, c2))
        return result;
    return compareNumber(d1, d2);
}

int VersionInfo::compare(const std::string& first, const std::string& second)
{
    int a1, b1, c1, d1, a2, b2, c2, d2;
    readVersion(first, a1, b1, c1, d1);
    readVersion(second, a2, b2, c2, d2);
    return compare(a1, b1, c1, d1, a2, b2, c2, d2);
}
