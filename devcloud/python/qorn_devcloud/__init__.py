"""Tests with the development cloud, of a gateway or of anything else that talks to one.

Under pytest the fixtures `qorn_cloud` and `qorn_gateway` are there without an import. Other tests start
`Cloud` and `Gateway` as context managers. `Control` reaches a cloud that runs already, and
`qorn_devcloud.wire` plays a client and shows answers as they came over the wire.

No object is thread-safe. Two objects have nothing in common: ports are free ones and folders the caller's.
"""

from .cloud import Cloud
from .control import Control, Refused, Request
from .gateway import Answer, Gateway, write_config
from .process import Ended, Process, find_program

__all__ = ["Answer", "Cloud", "Control", "Ended", "Gateway", "Process", "Refused", "Request", "find_program",
           "write_config"]
