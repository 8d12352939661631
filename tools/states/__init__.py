"""The states that Sonvelle brings along, instrument by instrument: tools/make_states.py writes them as files.

STATES is {instrument: {title: the XML element of a state, as far as it differs from a new plug-in's}}.
"""

from states import samplers, spectra, synthesizer

STATES = {
    "Toneloom4NN": synthesizer.TONELOOM,
    "Playbox": samplers.PLAYBOX,
    "Vinylrake": samplers.VINYLRAKE,
    "Layerbox": samplers.LAYERBOX,
    "Grainloom": spectra.GRAINLOOM,
}
