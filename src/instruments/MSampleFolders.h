#pragma once
#include "core/MString.h"

// Whether a folder is the root or lies below it, without regard to case; `rest` is then its path from there
// on, without a leading "/". An empty root has nothing below it.
bool MIsBelowFolder(const MString& folder, const MString& root, MString& rest);

// The path without a leading "/" and without the parts "..", so that it leads nowhere but down.
MString MWithoutParents(const MString& folder);

// Where samples of a user's own folder are collected, below the root of samples: "Imported", the number of
// the system's volume where it has one, and the folder with "-" for each ":".
MString MCollectedFolder(const MString& subpath);
