#pragma once

#include "DMDataFileInfo.h"
#include "SingletonSlot.h"

#include <string>

// Reads the summary of a tax case file for the quick view: the persons of the
// case ("Person") and the user's comment ("Kommentar"). Paths and values are
// Latin-1 byte strings.
class QuickView
{
public:
    static QuickView* TheInstance();
    // For tests: destroys the instance, so that the next TheInstance() starts
    // without a loaded file.
    static void resetInstance();

    // Prepares the reader; true when files can be read.
    bool Init();
    // True only when the reader is ready and the file was read.
    bool setFile(const std::string& path);
    // The item's value, "?" when the file does not hold it; empty when no
    // file is loaded.
    std::string getItem(const std::string& key) const;

private:
    friend class SingletonSlot<QuickView>;
    QuickView();

    bool m_initialised = false;
    bool m_loaded = false;
    DMDataFileInfo m_info;
};
