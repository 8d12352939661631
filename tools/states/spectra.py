"""Grainloom, on the library of bass tones of tools/content."""

from states.curves import add, add_curve, state

NOTE = [(0, 0.9), (0.85, 0.9), (1, 0)]


def grainloom(bands, colour_offset=0.2, envelope=NOTE, file="Natural Bass"):
    """`bands`: (index, shift in bins, volume), from the lowest band on."""
    root = state(subpath="Natural", filename=f"{file}.qxSubSampleLib", coloroffset=colour_offset)
    add_curve(root, "envelope", envelope)
    generator = add(root, "generator")
    for index, shift, volume in bands:
        add(generator, "item", Index=index, Offset=0, OffsetModif=shift, Volume=volume)
    return root


def plain(indices, volumes=(1,) * 10, shift=0):
    return [(index, shift, volume) for index, volume in zip(indices, volumes)]


# Of the tones, from dark to bright.
WARM, UPRIGHT, FINGER, MUTED, DRIVEN, HOLLOW, SAW, PICK = range(8)
GRAINLOOM = {
    "Natural bass": grainloom(plain((FINGER,) * 10), 0),
    "Picked bass": grainloom(plain((FINGER,) * 3 + (PICK,) * 7, (1, 1, 1, 1, 1, 1, 1.2, 1.5, 1.5, 1)), 0.1),
    "Dark bass": grainloom(plain((WARM,) * 4 + (MUTED,) * 6, (1, 1, 1, 1, 0.5, 0.3, 0.1, 0, 0, 0))),
    "Blended bass": grainloom(plain((0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 0.5, 1.5, 2.5)), 0.5),
    "Wide bass": grainloom(plain((1.2, 5.6, 0.4, 4.7, 2.3, 6.1, 3.5, 1.8, 0.6, 5.2)), 1),
    "Bent metal": grainloom([(HOLLOW, 0, 1), (HOLLOW, 2, 1), (DRIVEN, 6, 1), (DRIVEN, 10, 1), (SAW, 14, 1), (SAW, 22, 1),
                             (PICK, 40, 1), (PICK, 60, 1), (PICK, 0, 1), (PICK, 0, 1)], 0.3, [(0, 0.9, -0.5), (1, 0)]),
}
