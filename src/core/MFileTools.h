#pragma once
// Operations on files and folders by their paths. A failure is an MException with the path as it was given.

#include "core/MString.h"

// Whether there is a folder of that name, or a link to one.
bool FolderExists(const MString& path);

// Whether there is anything of that name, or a link to it.
bool FileExists(const MString& path);

// The number of the volume that a path lies on; false if it cannot be had.
bool GetVolumeNumber(const MString& path, uint64_t& number);

// Makes all folders of the path that are missing, from left to right. What exists is skipped, and so is the
// whole of an empty path. Raises "Could not create path "{0}"."; what was made until then stays.
void CreatePath(const MString& path);

// Gives a file or folder another name or another place on the same disk. Nothing is replaced: a target that
// exists is a failure, "Could not rename file "{0}" to "{1}"."
void RenameFile(const MString& from, const MString& to);

// Removes a file, or a link but never what it leads to. Raises "Could not delete file "{0}"."
void DeleteFile(const MString& path);

// Removes an empty folder. Raises "Could not remove directory "{0}"."
void RemoveDirectory(const MString& path);

// Copies the content of a file. A target that exists is replaced when all of the copy is on the disk, so a
// failure leaves it as it was (MAtomicFile). Raises what MFileStream does; a file that would be copied onto
// itself, by whatever names, "could not be created" (kNotOpened).
void CopyFile(const MString& from, const MString& to);
