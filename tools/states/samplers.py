"""Playbox, Vinylrake and Layerbox, on the samples and the drum of tools/content."""

from states.curves import add_curve, state

FLAT = [(0, 1), (1, 1)]


def playbox(sample, envelope, delay=0):
    root = state(subpath="", CustomSamplePath=0, filename=f"{sample}.wav", parameterdelay=delay)
    add_curve(root, "envelope", envelope)
    return root


PLAYBOX = {
    "Plucked string": playbox("Plucked String", FLAT),
    "Muted string": playbox("Plucked String", [(0, 1, -0.8), (0.18, 0.1), (0.25, 0)]),
    "Church bell": playbox("Bell", [(0, 1), (0.7, 1), (1, 0)]),
    "Slow choir": playbox("Vowel Pad", [(0, 0), (0.35, 0.8), (0.6, 1), (1, 0)], -0.1),
    "Tight kick": playbox("Kick", [(0, 1), (0.15, 0.9), (0.4, 0)]),
    "Closed hat": playbox("Hat", [(0, 1, -0.6), (0.45, 0)]),
}


def vinylrake(sample, seconds, scratch, volume):
    """`scratch`: where in the sample, over time."""
    root = state(subpath="", CustomSamplePath=0, FileName=f"{sample}.wav", parameterlength=seconds)
    add_curve(root, "Envelope", volume)
    add_curve(root, "Scratch", scratch)
    return root


ENDS = [(0, 0), (0.01, 1), (0.97, 1), (1, 0)]
VINYLRAKE = {
    "Slow scratch": vinylrake("Spoken Word", 2, [(0, 0.05), (0.5, 0.75), (1, 0.05)], ENDS),
    "Baby scratch": vinylrake("Spoken Word", 1, [(0, 0.1), (0.125, 0.4), (0.25, 0.1), (0.375, 0.4), (0.5, 0.1), (1, 0.7)], ENDS),
    "Chirp": vinylrake("Spoken Word", 0.6, [(0, 0.1), (0.5, 0.5), (1, 0.1)],
                       [(0, 0), (0.04, 1), (0.4, 1), (0.49, 0), (0.51, 0), (0.6, 1), (0.96, 1), (1, 0)]),
    "Backspin": vinylrake("Bell", 1.5, [(0, 0.9, 0.6), (1, 0)], ENDS),
    "Tape stop": vinylrake("Vowel Pad", 2.5, [(0, 0.1, -0.6), (1, 0.8)], [(0, 0), (0.01, 1), (0.8, 0.9), (1, 0)]),
    "Snare flutter": vinylrake("Snare", 0.8, [(i / 8, 0.3 * (i % 2)) for i in range(9)], [(0, 0.9), (0.9, 0.7), (1, 0)]),
}

CLOSE, ROOM = range(2)


def layerbox(volumes, pans=(0, 0), solo=-1, envelope=FLAT, single=False, file="Sonvelle Drum"):
    root = state(subpath="", filename=f"{file}.qxMultiSample", solo=solo, parametersinglesample=int(single))
    add_curve(root, "velocity", [(0, 0), (1, 1)])
    add_curve(root, "envelope", envelope)
    for track, (volume, pan) in enumerate(zip(volumes, pans)):
        root.set(f"volume{track}", str(volume))
        root.set(f"pan{track}", str(pan))
        root.set(f"enabling{track}", str(int(volume > 0)))
    return root


LAYERBOX = {
    "Natural drum": layerbox((1, 0.8)),
    "Tight kit": layerbox((1.4, 0), envelope=[(0, 1), (0.3, 0.8), (0.5, 0)]),
    "Room drum": layerbox((1, 1.4), solo=ROOM),
    "Gated room": layerbox((0.6, 1.1), envelope=[(0, 1), (0.45, 1), (0.5, 0)]),
    "Off to the side": layerbox((0.8, 0.6), pans=(-0.6, 0.4)),
    "One loud stroke": layerbox((1.1, 0.5), single=True),
}
