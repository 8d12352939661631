#pragma once
// Paths are texts with "/" between their parts, on every system; the root is "/", or "X:/" where drives have
// letters. Nothing here looks at the disk, but for the current folder.

#include "core/MString.h"

// The current folder of the process. Raises "Could not retrieve system path. " and the text of the system's
// error where it is not known, since it was removed for instance, or has a name that is no text.
MString GetCurrentFolder();

// An absolute path with "/" for each "\" and without one trailing "/"; the root keeps its own. What is
// relative gets the current folder in front; where that is not known (it was removed, say) this raises "Could
// not retrieve system path. " and the text of the system's error. An empty path stays empty.
MString NormalizePath(const MString& path);

// `folder` and `name` with exactly one "/" between them. If one part is empty, the other one as it stands.
MString JoinPath(const MString& folder, const MString& name);

// The last part of a path, behind its last "/".
MString GetPathName(const MString& path);

// Raises "Could not retrieve system path. " and the text of an error of the operating system.
[[noreturn]] void MThrowNoSystemPath(const MString& reason);

// A path as the operating system wants it: UTF-8 with a zero byte behind it. No bytes at all (GetSize() is 0)
// if it would name another file, since it holds a zero character or half of a surrogate pair.
MBytes MEncodePath(const MString& path);

// The text of a path of the operating system, zero-terminated. False if the bytes are no text that gives the
// same bytes again: such a file cannot be named.
bool MDecodePath(const char* bytes, MString& path);
