#pragma once
#include "plugin/MHostInterface.h"
#include "plugin/MValue.h"

// Formatters for rows of a plug-in's table; ParseParameterText reads what they show. Units: core/MUnitText.h.
void M_CALL MShowPercent(MString& text, double value, const MPluginParameter& row);
void M_CALL MShowSquaredDecibels(MString& text, double value, const MPluginParameter& row);
void M_CALL MShowMilliseconds(MString& text, double value, const MPluginParameter& row);
void M_CALL MShowFrequency(MString& text, double value, const MPluginParameter& row);
void M_CALL MShowFrequencyLog10(MString& text, double value, const MPluginParameter& row);
// The number in the row's unit as a format: "{0.2} dB", "{0} samples".
void M_CALL MShowInUnit(MString& text, double value, const MPluginParameter& row);

// The row's texts as the text functions of a value that is bound to it. The row outlives the value.
MValueFunctions MRowTextFunctions(const MPluginParameter& row) noexcept;
