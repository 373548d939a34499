#pragma once

#include <string>

// Folders that belong to this user alone: a real folder (no symbolic link),
// owned by the user, mode 0700. Nothing another local user can plant there
// is read as the user's own, and nothing written there can be redirected.
// Paths are native (in the file-system encoding).
namespace PrivateFolder {

// Makes the folder when it is missing (its parent must exist) and checks it.
// A folder of the user's own with a wider mode is narrowed to 0700; a link,
// a folder of someone else's or anything that is no folder is refused.
bool ensure(const std::string& nativePath);

// Whether the folder is still as ensure() left it; checked before each use.
bool isPrivate(const std::string& nativePath);

// Where the user's settings go when their configured folder cannot be made:
// "startcenter" below the user's cache folder, failing that below the
// session's runtime folder; each parent must be the user's own and closed to
// others. Native, with a trailing "/"; empty when neither can be had.
std::string settingsFallback();

} // namespace PrivateFolder
