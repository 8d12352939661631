"""All hosts of the matrix, in the order of its columns."""

from ardour_session import FORMATS, ArdourSession
from jalv import Jalv
from lv2_tools import Apply, Bench, Validate
from lv2file import Lv2File
from own_hosts import OwnHost
from place import Place
from scanners import ArdourScanner, QtractorScanner


def hosts(build=None):
    build = Place(build).build
    own = {format: OwnHost(format, build) for format in ("LV2", "CLAP", "VST3")}
    lv2, vst3 = map(ArdourSession, FORMATS)
    return [own["LV2"], Validate(), Apply(), Bench(), Lv2File(), Jalv(), lv2, own["CLAP"], QtractorScanner(), own["VST3"],
            ArdourScanner(), vst3]
