#pragma once
// The one header that a host needs: entry points, numbered services, and the records that a host and a
// plug-in share.
//
// Each plug-in is one exported function, `<name>PluginInterface(instance, service, arguments)`. The very
// first call of a plug-in's life is (null, kAttach, {context, callback}); its result is the address that
// every later call passes as `instance`, until kDestroy. An unknown service gives -1. Exceptions pass
// through: a host catches MException.
//
// Order of calls on an effect: kPrepare before the first block, and again at every change of format or to
// clear its memory; then any number of kProcess with blocks of any size from 0 up; kParameterChanged between
// blocks. The services for audio may be called on an audio thread: they do not wait, and they allocate only
// where the plug-in's page says so.
//
// Order of calls on an instrument: kPrepareStreams first; then, per note, kCreateStream, which allocates, any
// number of kComputeStream, and kCloseStream once. Any number of streams sound at a time. The host closes
// them all before kDestroy.
//
// The two sides share the fields of these records, `core`, compiler and standard library. Texts in a record
// point into the library: a host copies what it keeps beyond the library's life. A host's allocator table
// (core/MMemory.h) must accept blocks of the C heap, and it, like the event lock, must outlive the library.

#include "plugin/MModule.h"

using MPluginEntryPoint = MWord M_CALL(void* instance, int32_t service, MServiceArguments* arguments);

// The host's entry for calls from a plug-in; `code` is one of MHostCode.
using MHostCallback = MWord M_CALL(void* context, int32_t code, MServiceArguments* arguments);

// Services; a, b and c are the values of slots 0, 1 and 2.
namespace MService {
constexpr int32_t kAttach = 0;            // a: context, b: MHostCallback; returns the plug-in's address
constexpr int32_t kDestroy = 1;           // the address is dead behind it
constexpr int32_t kPublicBlock = 2;       // returns MPluginPublicBlock*, valid for the plug-in's life
constexpr int32_t kDetach = 3;            // the host lets go; every later call is still allowed
constexpr int32_t kParameterChanged = 4;  // a: index of the row whose value the host has written
constexpr int32_t kCreateEditor = 5;      // a: MControl* that becomes the parent
constexpr int32_t kEditorClosed = 6;      // a: address of the window that the host destroyed
constexpr int32_t kSaveState = 11;        // a: MXMLItem* to write to; returns 0 or 1
constexpr int32_t kLoadState = 12;        // a: MXMLItem* to read; returns 0 or 1
constexpr int32_t kStateLoaded = 13;      // all parts of a state have been loaded
constexpr int32_t kQuery = 14;            // a: unused so far; returns -1
constexpr int32_t kCommand = 20;          // a: zero-terminated name, b: its argument; -1 for an unknown name
// Effects.
constexpr int32_t kPrepare = 100;     // a: channels, b: sample rate in hertz; also clears the memory
constexpr int32_t kProcess = 101;     // a: float** in, b: float** out (may be the same arrays), c: samples
constexpr int32_t kIsSilent = 102;    // 1 nothing is left in the effect's memory, 0 it still sounds
constexpr int32_t kGetLatency = 103;  // samples by which the effect delays the signal
constexpr int32_t kSkip = 104;        // a: samples of time that pass without a block
// Instruments.
constexpr int32_t kPrepareStreams = 200;  // a: channels, b: sample rate in hertz
constexpr int32_t kCreateStream = 201;    // a: MStreamRequest*; 0 made, 1 not made
constexpr int32_t kComputeStream = 202;   // a: float** out, b: samples, c: MWord* of the handle
constexpr int32_t kStreamQuery = 203;     // a, b: unused so far; returns 0
constexpr int32_t kCloseStream = 204;     // a: MWord* with the handle, which becomes 0
constexpr int32_t kCollectFiles = 205;    // a: MCollectedFiles* that gets the files of the state
}  // namespace MService

// What kComputeStream returns of a block.
namespace MStreamResult {
constexpr int32_t kSounds = 0;
constexpr int32_t kEnded = 1;       // the rest of the block is 0; so are all later blocks
constexpr int32_t kNotStarted = 2;  // nothing was written: the block is silent
}  // namespace MStreamResult

// Codes of calls from a plug-in to its host; the arguments are empty.
namespace MHostCode {
constexpr int32_t kParametersChanged = 1;  // the plug-in or its editor changed values by itself
constexpr int32_t kLayoutChanged = 2;      // the set of visible controls of the editor changed
}  // namespace MHostCode

enum class MParameterKind : int32_t {
  kNone = 0,
  kReal = 1,
  kInteger = 2,
  kEnumeration = 3,
  kSwitch = 4,
  kPanel = 5,  // no parameter: groups those behind it in the editor
};

struct MPluginParameter;

// Gives the display text of a value of a row.
using MParameterFormatter = void M_CALL(MString& text, double value, const MPluginParameter& row);

// One row of a plug-in's table. The host reads and writes `value` in place, whole, with MLoadShared and
// MStoreShared, and tells the plug-in with kParameterChanged.
struct MPluginParameter {
  MParameterKind kind = MParameterKind::kNone;
  MString name;  // shown to the user
  MString key;   // storage key, unique in the plug-in
  MString help;  // mark-up text
  MWord reserved = 0;
  MParameterFormatter* formatter = nullptr;  // null: plain number, choice, or 0 and 1
  MString unit;                              // format or unit for the formatter
  int32_t automatable = 1;

  struct Real {
    double minimum, maximum, defaultValue, value;
  };
  struct Integer {
    int32_t minimum, maximum, defaultValue, value;
  };
  struct Enumeration {
    const char* const* choices;
    int32_t count;
    int32_t defaultValue, value;  // indices
  };
  struct Switch {
    int32_t defaultValue, value;  // 0 or 1
  };
  struct Panel {
    MWord zero;
    int8_t* open;  // its state in the editor, null when it is not kept
  };
  union alignas(8) {
    Real real = {};
    Integer integer;
    Enumeration enumeration;
    Switch onOff;
    Panel panel;
  };

  int32_t changed = 0;
};

// One named editor window besides the main one.
struct MPluginEditorRow {
  int32_t kind = 0;
  MString name;
  int32_t available = 1;
  MWord* editor = nullptr;  // the word that holds the open window, 0 while none is open
};

// A note: service kCreateStream makes a stream of it.
struct alignas(8) MStreamRequest {
  int32_t delay = 0;  // samples of silence in front of the note
  uint8_t reserved[28] = {};
  double volume = 1;        // linear gain
  double ratio = 1;         // frequency of the note against the root of the sound
  MWord* result = nullptr;  // gets the handle, if there is a stream
};

// The full paths of the files that a state needs.
struct MCollectedFiles {
  static constexpr int32_t kMost = 256;

  int32_t count = 0;
  MString path[kMost];
};

// What service kPublicBlock hands out, read by the host in place.
struct MPluginPublicBlock {
  uint8_t hostFlag0 = 0;  // the host's own
  uint8_t hostFlag1 = 1;  // the host's own
  uint8_t pluginFlag = 0;
  MPluginParameter* parameters = nullptr;
  int32_t parameterCount = 0;
  MPluginEditorRow* editors = nullptr;
  int32_t editorCount = 0;
};
