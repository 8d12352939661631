"""The latency that an effect reports to hosts of LV2."""

import ctypes
from ctypes import POINTER, c_char_p, c_double, c_float, c_uint32, c_void_p

from place import Failure

FRAMES = 256


class Descriptor(ctypes.Structure):
    _fields_ = [
        ("uri", c_char_p),
        ("instantiate", ctypes.CFUNCTYPE(c_void_p, c_void_p, c_double, c_char_p, POINTER(c_void_p))),
        ("connect_port", ctypes.CFUNCTYPE(None, c_void_p, c_uint32, c_void_p)),
        ("activate", ctypes.CFUNCTYPE(None, c_void_p)),
        ("run", ctypes.CFUNCTYPE(None, c_void_p, c_uint32)),
        ("deactivate", ctypes.CFUNCTYPE(None, c_void_p)),
        ("cleanup", ctypes.CFUNCTYPE(None, c_void_p)),
        ("extension_data", c_void_p),
    ]


def report_latency(bundle, uri, rate):
    """In samples, of a new effect that has run for one block. Its ports are two inputs, two outputs, the latency."""
    module = ctypes.CDLL(str(bundle / "sonvelle-plugins.so"))
    module.lv2_descriptor.restype = POINTER(Descriptor)
    module.lv2_descriptor.argtypes = [c_uint32]
    index = 0
    while (found := module.lv2_descriptor(index)) and found.contents.uri.decode() != uri:
        index += 1
    if not found:
        raise Failure(f"{uri}: the bundle has no such plug-in")
    effect = found.contents
    handle = effect.instantiate(ctypes.cast(found, c_void_p), rate, str(bundle).encode() + b"/", (c_void_p * 1)(None))
    if not handle:
        raise Failure(f"{uri}: it cannot be made")
    sounds, latency = [(c_float * FRAMES)() for _ in range(4)], c_float(-1)
    for port, data in enumerate([*sounds, latency]):
        effect.connect_port(handle, port, ctypes.cast(ctypes.byref(data), c_void_p))
    effect.activate(handle)
    effect.run(handle, FRAMES)
    effect.deactivate(handle)
    effect.cleanup(handle)
    return round(latency.value)
