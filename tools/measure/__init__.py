"""Measurements of the built effects. Each function of MEASUREMENTS takes a Lab and returns rows."""

from measure import filters, levels, modulation

MEASUREMENTS = {
    "Echolan": filters.echolan,
    "Squeezel": levels.squeezel,
    "Tonebench": filters.tonebench,
    "Lumascope": levels.lumascope,
    "Imprinta": filters.imprinta,
    "Clampet": levels.clampet,
    "Bendform": levels.bendform,
    "Roamplex": modulation.roamplex,
    "Pulsetta": modulation.pulsetta,
    "Swirlo": modulation.swirlo,
    "Quaverly": modulation.quaverly,
    "Bellwarp": modulation.bellwarp,
    "Widenor": filters.widenor,
    "Slotter": filters.slotter,
    "Slidebench": filters.slidebench,
}
