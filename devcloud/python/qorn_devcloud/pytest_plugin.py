"""The fixtures `qorn_cloud` and `qorn_gateway` for pytest, which finds them by the installed package."""

import pathlib
from collections.abc import Iterator, Mapping, Sequence

import pytest

from . import Cloud, Gateway


@pytest.fixture
def qorn_cloud_options() -> Sequence[str]:
    """The options of the test's cloud: none, unless a test module or class has a fixture of this name."""
    return ()


@pytest.fixture
def qorn_cloud(qorn_cloud_options: Sequence[str]) -> Iterator[Cloud]:
    """A development cloud of the test's own."""
    with Cloud(*qorn_cloud_options) as cloud:
        yield cloud


@pytest.fixture
def qorn_gateway_keys() -> Mapping[str, object]:
    """Keys of the gateway's configuration, in addition to those that it has anyway."""
    return {}


@pytest.fixture
def qorn_gateway(qorn_cloud: Cloud, qorn_gateway_keys: Mapping[str, object],
                 tmp_path: pathlib.Path) -> Iterator[Gateway]:
    """A gateway on the test's cloud, with a folder of its own."""
    with Gateway(qorn_cloud, tmp_path / "qorn-gateway", keys=qorn_gateway_keys) as gateway:
        yield gateway
