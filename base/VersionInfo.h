#pragma once

#include "BundleInfo.h"

#include <string>

// Version texts of a program, read from the information dictionary of the
// application bundle that contains it, and comparison of four-part version
// numbers a.b.c.d.
class VersionInfo
{
public:
    VersionInfo() = default;               // the running program
    explicit VersionInfo(const char* exeName);
    virtual ~VersionInfo() = default;

    void setExeName(const char* exeName);

    // "LegalCopyright", "ProductName", "Version", "ProductVersion" or
    // "ProductBuildVersion"; any other name gives "". The two product version
    // fields give the build form "Build-<c>" of a version a.b.c.d.
    std::string getStringFileInfo(const char* field);
    std::string getProductName();
    std::string getCopyright();
    std::string getProductVersion();
    std::string getProductBuild();
    bool hasInfo();

    // The numbers of "Version"; false when it is empty. Numbers missing from
    // the text leave their arguments untouched.
    bool getFileVersion(int& a, int& b, int& c, int& d);
    std::string getFileVersionAsString();

    // Not available on this platform: they report so on the standard output
    // and fill nothing.
    bool getProductVersion(int& a, int& b, int& c, int& d);
    std::string getProductVersionAsString();
    bool getFixedFileVersion();

    static std::string asString(int a, int b, int c, int d);
    // -1, 0 or 1, number by number.
    static int compare(int a1, int b1, int c1, int d1, int a2, int b2, int c2, int d2);
    static int compare(const std::string& first, const std::string& second);

private:
    const BundleInfo& bundle();

    std::string m_exeName;
    BundleInfo m_bundle;
    bool m_bundleRead = false;
};
