#pragma once
#include <vector>

#include "core/MList.h"

// Whether a name is one that a filter lets through: patterns with ";" between them, in which "*" stands for
// any text and "?" for one character, blind for case. A name that begins with "." is hidden from patterns
// that do not. An empty filter is "*".
bool MatchesFilter(const MString& name, const MString& filter);

// Lists a folder: the names of the files, which the filter lets through, and of the folders, which it does
// not hold back unless they are hidden. A null list is not wanted. Links count as what they lead to; links
// that lead nowhere, devices and pipes are left out, and so are names that are no text (MDecodePath). Sorted
// by MString::Compare, equal names by their units.
//
// Raises "Could not access path "{0}" to get file list."; the lists are as they were then.
void GetFileList(const MString& path, const MString& filter, MList<MString>* files, MList<MString>* folders);

// A folder with all that lies below it.
struct MFileTree {
  MString name;
  MList<MString> files;
  std::vector<MFileTree, MAllocator<MFileTree>> folders;

  // Folders below are left out: far deeper than anybody nests samples, far less than the stack can hold.
  static constexpr int32_t kMaximumDepth = 500;

  // All files and folders that are not hidden, in the order of GetFileList, without links to folders. What
  // cannot be read is an empty folder, a missing one too: nothing is raised but "Out of memory."
  static MFileTree Scan(const MString& path);
};
