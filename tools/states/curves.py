"""Curves and elements of states."""

from xml.etree.ElementTree import Element, SubElement


def add_curve(parent, tag, points):
    """`points`: (x, y) or (x, y, tension); with a tension below 0 the curve to the next point falls or rises early."""
    curve = SubElement(parent, tag)
    for x, y, *tension in points:
        values = {"x": str(x), "y": str(y)} | ({"c": str(tension[0])} if tension else {})
        SubElement(curve, "Point", values, Type="Mode 2", Flags="12")
    return curve


def add(parent, tag, **values):
    return SubElement(parent, tag, {key: str(value) for key, value in values.items()})


def state(**values):
    return Element("state", {key: str(value) for key, value in values.items()})
