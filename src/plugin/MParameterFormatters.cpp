#include "plugin/MParameterFormatters.h"

#include "core/MFormat.h"
#include "core/MUnitText.h"
#include "plugin/MParameterText.h"

void M_CALL MShowPercent(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kPercent.show(value);
}

void M_CALL MShowSquaredDecibels(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kSquaredDecibels.show(value);
}

void M_CALL MShowMilliseconds(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kMilliseconds.show(value);
}

void M_CALL MShowFrequency(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kFrequency.show(value);
}

void M_CALL MShowFrequencyLog10(MString& text, double value, const MPluginParameter&) {
  text = MUnits::kFrequencyLog10.show(value);
}

void M_CALL MShowInUnit(MString& text, double value, const MPluginParameter& row) {
  if (row.kind == MParameterKind::kReal)
    text = Format(row.unit).Arg(value).Text();
  else
    text = Format(row.unit).Arg(MString::FromDouble(std::nearbyint(value) + 0.0, 0)).Text();
}

MValueFunctions MRowTextFunctions(const MPluginParameter& row) noexcept {
  return {[](const void* context, MString& text, double value) {
            text = MParameterText(*static_cast<const MPluginParameter*>(context), value);
          },
          [](const void* context, const MString& text, double& value) {
            const auto& shownRow = *static_cast<const MPluginParameter*>(context);
            const std::optional<double> read = ParseParameterText(shownRow, text);
            if (read) value = *read;
            return read.has_value();
          },
          &row};
}
