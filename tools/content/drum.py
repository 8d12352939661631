"""The recordings of one drum: three loudnesses, three takes of each, a microphone close to it and a pair in the room."""

from content.synthesis import drive, faded, frames_of, glide, high_pass, low_pass, mix, noise, partial

FORCES = (0.16, 0.42, 0.9)  # of the layers
LEVEL = 0.6  # of a force of 1: both tracks together stay below full scale
TAKES = 3
SECONDS = 0.55
# Of the room: delays in samples and what comes back, for left and right.
COMBS = ((1187, 1423, 1693, 1931), (1249, 1367, 1747, 1873))


def close(layer, take):
    """The harder a stroke, the higher the bend of the skin's pitch, the brighter the stick."""
    force = FORCES[layer]
    frames = frames_of(SECONDS)
    pitch = 128 * (1 + 0.006 * (take - 1))
    skin = mix((1, glide(pitch * (1.1 + 0.5 * force), pitch, 0.03, 0.5, frames)),
               (0.3 + 0.03 * take, partial(pitch * 1.593, 0.25 - 0.02 * take, frames)),
               (0.16, partial(pitch * 2.136, 0.18, frames)))
    stick = low_pass(high_pass(noise(100 * layer + take, 0.05, frames), 900), 1500 + 9000 * force)
    return faded(drive(mix((1, skin), (0.2 + 0.5 * force, stick)), 0.3 + force), 0.03)


def comb(signal, delay, gain, damping):
    line, at, y, out = [0.0] * delay, 0, 0.0, []
    for x in signal:
        value = line[at]
        y = value + damping * (y - value)
        line[at] = x + gain * y
        at = (at + 1) % delay
        out.append(value)
    return out


def room(dry):
    sides = []
    for delays in COMBS:
        sides.append(faded(mix((0.3, dry), *((0.25, comb(dry, delay, 0.72, 0.35)) for delay in delays)), 0.08))
    return sides


def recordings():
    """(layer, take, {track: channels}), layers and takes from 1 on, with the levels that they have to each other."""
    for layer, force in enumerate(FORCES):
        for take in range(TAKES):
            dry = close(layer, take)
            level = LEVEL * force * (1 - 0.04 * take) / max(map(abs, dry))
            dry = [level * value for value in dry]
            yield layer + 1, take + 1, {"Close": [dry], "Room": room(dry)}
