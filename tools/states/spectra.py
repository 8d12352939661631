"""Grainloom, on the library of bass tones of tools/content."""

from states.curves import add, add_curve, state

NOTE = [(0, 0.9), (0.85, 0.9), (1, 0)]


def grainloom(bands, colour_offset=0.2, envelope=NOTE):
    """`bands`: (index, shift in bins, volume), from the lowest band on."""
    root = state(subpath="Natural", filename="Natural Bass.qxSubSampleLib", coloroffset=colour_offset)
    add_curve(root, "envelope", envelope)
    generator = add(root, "generator")
    for index, shift, volume in bands:
        add(generator, "item", Index=index, Offset=0, OffsetModif=shift, Volume=volume)
    return root


def plain(indices, volumes=(1,) * 10, shift=0):
    return [(index, shift, volume) for index, volume in zip(indices, volumes)]


GRAINLOOM = {
    "Natural bass": grainloom(plain((0,) * 10), 0),
    "Picked bass": grainloom(plain((4, 4, 4, 3.5, 3.5, 3, 3, 3, 3, 3), (1, 1, 1, 1, 1, 1.2, 1.4, 1.4, 1, 1)), 0.1),
    "Dark bass": grainloom(plain((7, 7, 7, 2, 2, 2, 2, 2, 2, 2), (1, 1, 1, 0.6, 0.3, 0.1, 0, 0, 0, 0))),
    "Blended bass": grainloom(plain((0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 0.5, 1.5, 2.5)), 0.5),
    "Wide bass": grainloom(plain((1.2, 5.6, 0.4, 4.7, 2.3, 6.1, 3.5, 1.8, 0.6, 5.2)), 1),
    "Bent metal": grainloom([(5, 0, 1), (5, 2, 1), (1, 6, 1), (1, 10, 1), (6, 14, 1), (6, 22, 1), (1, 40, 1), (1, 60, 1),
                             (1, 0, 1), (1, 0, 1)], 0.3, [(0, 0.9, -0.5), (1, 0)]),
}
