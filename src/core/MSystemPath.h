#pragma once
// The folders that the system has for data, documents, programs and fonts.

#include "core/MString.h"

enum class MSystemPath : int32_t {
  kData,
  kUserData,
  kDocuments,
  kUserDocuments,
  kProgramFiles,
  kComponents,
  kStartMenu,
  kUserStartMenu,
  kStartMenuPrograms,
  kUserStartMenuPrograms,
  kDesktop,
  kUserDesktop,
  kSystem,
  kFonts,
  kTemp,
};

struct MSystemPathRow {
  const char* name;  // in XML and configuration
  int32_t
      windowsId;  // the number of the folder (CSIDL) for Windows, -1 for the three that have their own call
};

// By number.
inline constexpr MSystemPathRow kSystemPaths[] = {
    {"data", 35},
    {"userdata", 26},
    {"documents", 46},
    {"userdocuments", 5},
    {"programfiles", 38},
    {"components", 43},
    {"startmenu", 22},
    {"userstartmenu", 11},
    {"startmenuprograms", 23},
    {"userstartmenuprograms", 2},
    {"desktop", 25},
    {"userdesktop", 16},
    {"system", -1},
    {"fonts", -1},
    {"temp", -1},
};

// The folder, normalised. Those of the user follow XDG_DATA_HOME, XDG_CONFIG_HOME, XDG_DOCUMENTS_DIR,
// XDG_PUBLICSHARE_DIR and XDG_DESKTOP_DIR (or the file user-dirs.dirs), HOME and TMPDIR; values that are no
// absolute path count as unset. kData and kUserData are made if they can be; that they cannot shows when
// something is written there. kTemp exists, unless the system has no folder for temporary files.
//
// Raises "Could not retrieve system path. " and the text of the system's error when the user has no home, or
// the number is none of these.
MString GetSystemPath(MSystemPath path);
