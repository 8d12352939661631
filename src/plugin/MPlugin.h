#pragma once
#include <algorithm>
#include <atomic>
#include <span>

#include "core/MEvent.h"
#include "core/MLock.h"
#include "plugin/MHostInterface.h"

class MControl;
class MXMLItem;

// Base of every plug-in: dispatches the numbered services to its virtual operations and holds the public
// block with the table of parameters. What a service finds null or out of range counts as nothing. Tags say
// which thread calls: [audio], [ui], [host] (any other thread of the host, or the same), [any].
class MPlugin : public MEventTarget {
 public:
  MPlugin() = default;
  ~MPlugin() override = default;

  virtual MWord Service(int32_t service, MServiceArguments* arguments);  // [any]
  virtual MWord Attach(void* hostContext,
                       MHostCallback* hostCallback);                // [host] returns the plug-in's address
  virtual void Detach() {}                                          // [host]
  virtual void ParameterChanged([[maybe_unused]] int32_t index) {}  // [host] index lies in the table
  virtual void Update() {}  // [host] recomputes what derives from parameters
  virtual void CreateEditor([[maybe_unused]] MControl* parent) {}  // [ui]
  // The host destroyed this window: its row's word is cleared; if it is no named one, all words are. [ui]
  virtual void EditorClosed(MWord window);
  // The table's rows as attributes "parameter" + key: four decimals, or a whole number. A class with more
  // data writes that and calls this. False, which is no failure. [host]
  virtual bool SaveState(MXMLItem& item);
  // Gives every row what its attribute says, whatever the row's range, or its default where there is none;
  // then Update(). False, which is no failure. [host]
  virtual bool LoadState(MXMLItem& item);
  virtual void StateLoaded() {}                                        // [host]
  virtual MWord Query([[maybe_unused]] MWord argument) { return -1; }  // [any]
  virtual MWord Command([[maybe_unused]] const char* name, [[maybe_unused]] MWord argument) {
    return -1;
  }  // [host]

  // Whether an editor shows the plug-in: only then does audio compute the levels, curves and spectra that
  // are drawn. [any]
  void SetEditorOpen(bool isOpen) noexcept { isEditorOpen_.store(isOpen, std::memory_order_relaxed); }
  bool IsEditorOpen() const noexcept { return isEditorOpen_.load(std::memory_order_relaxed); }

 protected:
  // The value of a slot; a null record reads as zeros. [any]
  static MWord GetWord(const MServiceArguments* arguments, int32_t index) noexcept;
  // The same, limited to what 32 bits hold. [any]
  static int32_t GetNumber(const MServiceArguments* arguments, int32_t index) noexcept;
  // Whether the host gave an address for each channel. [any]
  static bool AreAllThere(float** buffers, int32_t channels) noexcept;

  // Calls the host, if it is attached, with empty arguments. [any]
  MWord NotifyHost(int32_t code);
  void NotifyParametersChanged() { NotifyHost(MHostCode::kParametersChanged); }
  void NotifyLayoutChanged() { NotifyHost(MHostCode::kLayoutChanged); }

  // Announces the table. A constructor ends with it.
  template <int32_t N>
  void SetParameters(MPluginParameter (&rows)[N]) noexcept {
    block_.parameters = rows;
    block_.parameterCount = N;
  }
  // Announces the named editor windows.
  template <int32_t N>
  void SetEditors(MPluginEditorRow (&rows)[N]) noexcept {
    block_.editors = rows;
    block_.editorCount = N;
  }
  // For the host alone, which reads it in the public block.
  void SetPluginFlag() noexcept { block_.pluginFlag = 1; }
  std::span<MPluginParameter> GetParameters() const noexcept {
    return {block_.parameters, static_cast<std::size_t>(std::max(block_.parameterCount, 0))};
  }

 private:
  MHostCallback* hostCallback_ = nullptr;
  void* hostContext_ = nullptr;
  std::atomic<bool> isEditorOpen_ = false;

 protected:
  MLock lock_;  // guards the plug-in's structure: editors, and what a change rebuilds under the audio's feet

 private:
  MPluginPublicBlock block_;
};

// Fills a row of kind kReal; the default becomes the value.
void AddRealParameter(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
                      double minimum, double maximum, double defaultValue, const MString& unit = MString(),
                      MParameterFormatter* formatter = nullptr);

// Fills a row of kind kSwitch; the default becomes the value.
void AddSwitchParameter(MPluginParameter& row, const MString& name, const MString& key, const MString& help,
                        bool defaultValue);
// Fills a row of kind kPanel, which groups the rows behind it and keeps nothing.
void AddPanel(MPluginParameter& row, const MString& name);

// Whether a kSwitch row is on. [any]
inline bool MIsOn(const MPluginParameter& row) noexcept {
  return MLoadShared(row.onOff.value) != 0;
}

// The value of a kReal row for use in computations: not a finite number counts as the default, and what lies
// outside of `low` to `high` is limited. The row keeps what the host or a state has put there. [any]
double MLimitedValue(const MPluginParameter& row, double low, double high) noexcept;

// Defines the exported entry point of a plug-in's class.
#define M_PLUGIN_ENTRY(Class)                                                         \
  extern "C" M_VISIBLE MWord M_CALL Class##Interface(void* instance, int32_t service, \
                                                     MServiceArguments* arguments) {  \
    MPlugin* const plugin = instance ? static_cast<MPlugin*>(instance) : new Class;   \
    return plugin->Service(service, arguments);                                       \
  }
