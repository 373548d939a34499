#pragma once

#include <map>
#include <string>

// The information dictionary of an application bundle: a folder that holds
// Contents/Info.plist, an XML property list. Only the string values of the
// top-level dictionary are read. A missing or malformed file gives empty
// values. Paths and values are Latin-1 byte strings; characters outside
// Latin-1 become '?'.
class BundleInfo
{
public:
    BundleInfo() = default;

    // The nearest bundle that contains path (or is path), walking up.
    static BundleInfo forPath(const std::string& path);
    // The bundle that is exactly this folder, with empty values when it has
    // no Info.plist of its own; invalid when the folder does not exist.
    static BundleInfo at(const std::string& bundlePath);
    // The bundle of the running executable.
    static BundleInfo mainBundle();

    bool isValid() const { return !m_path.empty(); }
    std::string bundlePath() const { return m_path; }   // without a trailing "/"
    std::string value(const std::string& key) const;    // "" when missing

private:
    explicit BundleInfo(const std::string& path);

    std::string m_path;
    std::map<std::string, std::string> m_values;
};

// The main bundle's CFBundleIdentifier ("" outside a bundle).
std::string mainBundleIdentifier();
// The main bundle's folder ("" outside a bundle).
std::string mainBundlePath();
