"""The Python module against the library of a build, with the sample plug-in and one that is faulty."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile
from concurrent.futures import ThreadPoolExecutor, wait
from pathlib import Path
from typing import Callable, List, Optional, Union

import vykeldevenum
from vykeldevenum import ClosedError, Library, LoadError, PluginError, Site, StatusCode, StatusError, _native

BUILD = Path(os.environ["VYKEL_BUILD"])
LIBRARY = BUILD / "libvykeldevenum.so"


class Binding(unittest.TestCase):
    def setUp(self) -> None:
        self.root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        os.environ["WINHOST_ROOT"] = str(self.root)
        self.configuration = self.root / "c/ProgramData/Morvance/VY-KEL"
        self.configuration.mkdir(parents=True)

    def open(self, plugin: str = "simulated", devices: str = "", fault: str = "") -> Library:
        os.environ.update(VYKEL_ZOO_FAULT=fault, VYKEL_ZOO_STATE=str(self.root / "state"))
        copy = shutil.copy(BUILD / f"{plugin}.so", self.root)
        (self.root / "simulated.devices").write_text(devices, "utf-8")
        subprocess.run([BUILD / "vykeldev", "register", "left", copy], check=True, stdout=subprocess.DEVNULL)
        return self.enterContext(Library(LIBRARY))

    def assert_fails(self, call: Callable[[], object], code: int, name: Optional[str]) -> StatusError:
        with self.assertRaises(StatusError) as caught:
            call()
        self.assertEqual((caught.exception.code, caught.exception.name), (code, name))
        return caught.exception

    def test_shows_and_names_devices(self) -> None:
        library = self.open(devices='token=a token2=A version=2147483647 sortKey=4000000000 alias=""\n'
                                    'token=ü sortKey=5 number=7\n')
        with library.devices() as devices:
            self.assertEqual((len(devices), devices.stale, list(devices)), (0, True, []))
            devices.refresh()
            self.assertEqual(
                [(d.number, d.alias, d.version, d.sort_key, d.token(), d.token(2)) for d in devices],
                [(0, "", 2147483647, 4000000000, "a", "A"), (7, None, 1, 5, "ü", "ü")])
            self.assertFalse(devices.stale)
            devices[0].set_alias("Wäge")
            self.assertEqual(devices[-2].alias, "Wäge")
            self.assert_fails(lambda: devices[1].set_alias("x"), -52005, "InvalidParameter")
            self.assert_fails(lambda: devices.get(1, 3), -63193, "VersionMismatch")
            for wrong in (2, -3):
                self.assertRaises(IndexError, devices.get, wrong)
            for call in (lambda: devices.get(0, 2**31), lambda: devices.attach(-1),
                         lambda: devices[0].token(3), lambda: devices[0].set_alias("a\0b")):
                self.assertRaises(ValueError, call)

    def test_ends_lives(self) -> None:
        self.open(devices="token=a alias=A").close()
        for end in ("refresh", "close the list", "close the library"):
            with self.subTest(end), Library(LIBRARY) as library, library.devices() as devices:
                devices.refresh()
                device = devices[0]
                uses: List[Callable[[], object]] = [
                    lambda: device.number, lambda: device.alias, lambda: device.version, device.token,
                    lambda: device.sort_key, lambda: device.set_alias("x")]
                of_list = [devices.refresh, devices.__len__, lambda: devices[0], lambda: devices.attach(1)]
                if end == "refresh":
                    devices.refresh()
                else:
                    (devices if end == "close the list" else library).close()
                    uses += of_list
                for use in uses + [library.devices] * library.closed:
                    self.assertRaises(ClosedError, use)
        self.assertNotIn("simulated.so", Path("/proc/self/maps").read_text())  # each was finalised

    def test_reports_errors(self) -> None:
        with self.open(devices="token=a") as library, library.devices() as devices:
            shutil.rmtree(self.configuration)
            error = self.assert_fails(devices.refresh, -50209, "ConfigurationFault")
            assert isinstance(error.site, Site)
            self.assertGreater(error.site.line, 0)
            self.assertIn(error.site.file, str(error))
            self.assertEqual([device.number for device in devices], [None])
        shutil.rmtree(self.root / "c")
        os.environ["WINHOST_ROOT"] = str(self.root / "nowhere")
        self.assertIsNone(self.assert_fails(lambda: Library(LIBRARY), -52006, "ResourceNotFound").site)
        files: List[Union[str, Path]] = [__file__, BUILD / "libwinhost.so", self.root / "missing.so"]
        for file in files:
            with self.assertRaisesRegex(LoadError, str(file)):
                Library(file)

    def test_survives_faulty_plugins(self) -> None:
        for fault, expected in (("", "zoo 0/device 0"), ("latin_1_token", "<Ger\ufffdt 0/device 0"),
                                ("fails_refreshing", None), ("null_token", PluginError),
                                ("null_device", "zoo 0/device 0")):
            with self.subTest(fault), self.open("zoo_plugin", fault=fault) as library:
                devices = library.devices()
                devices.refresh()
                if expected is None:
                    self.assertEqual(len(devices), 0)
                elif expected is PluginError:
                    self.assertRaises(PluginError, devices[0].token, 2)
                    self.assertEqual(devices[0].number, 7)
                else:
                    self.assertEqual(devices[0].token(2), expected)
                devices.attach(2**64 - 1)
                self.assertIsNone(
                    self.assert_fails(lambda: devices.attach(2**64 - 1), -52005, "InvalidParameter").site)
                devices.detach(2**64 - 1)
                devices.attach(2**64 - 1)

    def test_has_the_documented_contract(self) -> None:
        text = (Path(__file__).parents[2] / "docs/binary-interface.md").read_text()
        codes = {int(code): name for code, name in re.findall(r"^\| (-?\d+) \| `([A-Z]\w+)`", text, re.M)}
        self.assertEqual(codes, {code.value: code.name for code in StatusCode})
        rows = {(int(first), int(second), name)
                for first, second, name in re.findall(r"^\| (\d+) \| (\d+) \| `(\w+)`", text, re.M)}
        for structure in (_native.DeviceListOperations, _native.DeviceOperations, _native.StatusBlock):
            for name, *_ in structure._fields_:
                field = getattr(structure, name)
                rows -= {(field.offset // 8, field.offset, name), (field.offset, field.size, name)}
        self.assertEqual(rows, set())

    def test_lets_threads_wait_for_each_other(self) -> None:
        devices = self.open(devices="token=a alias=A").devices()

        def refresh() -> None:
            for _ in range(50):
                (self.root / "simulated.devices").write_text("token=a alias=A")
                devices.refresh()

        with ThreadPoolExecutor() as pool:
            worker = pool.submit(refresh)
            while not worker.done():
                try:
                    self.assertIn([device.alias for device in devices], ([], ["A"]))
                except ClosedError:
                    pass
            worker.result()

    def test_closes_the_library_alone(self) -> None:
        library = self.open()
        with ThreadPoolExecutor() as pool:
            with library._lock:  # as devices() in another thread holds it
                closing = pool.submit(library.close)
                self.assertFalse(wait([closing], 0.1).done)
            closing.result()

    def test_makes_a_wheel(self) -> None:
        package = Path(vykeldevenum.__file__).parent
        shutil.copytree(package.parent, self.root / "source")
        clean = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
        options = "-m pip wheel -q --no-index --no-build-isolation --no-deps -w".split()
        subprocess.run([sys.executable, *options, self.root, self.root / "source"], env=clean, check=True)
        file = self.root / f"vykeldevenum-{os.environ['VYKEL_VERSION']}-py3-none-any.whl"
        with zipfile.ZipFile(file) as wheel:
            packed = {Path(name).name for name in wheel.namelist() if name.startswith("vykeldevenum/")}
        self.assertEqual(packed, {path.name for path in package.iterdir() if path.is_file()})
        self.open().close()
        python = self.root / "venv/bin/python"  # it has neither setuptools nor wheel
        subprocess.run([sys.executable, "-m", "venv", "--without-pip", self.root / "venv"], env=clean, check=True)
        subprocess.run([sys.executable, "-m", "pip", f"--python={python}", "install", "-q", "--no-index", file],
                       env=clean, check=True)
        module = next(self.root.glob("venv/lib/*/site-packages/vykeldevenum"))
        shutil.copy(LIBRARY, module)  # where Library() finds it
        use = "import vykeldevenum; vykeldevenum.Library().close()"
        subprocess.run([python, "-I", "-c", use], check=True)


if __name__ == "__main__":
    unittest.main()
