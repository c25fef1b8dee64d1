"""Every forbidden edge is caught, and the edges that the architecture draws are not."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_layers.py"

# Files that includes may point at; each is empty but for what a test writes into it.
TREE = """
suite/utility/path.h suite/core/event.h suite/midi/timeline.h suite/audio/create.h suite/audio/sample_rates.h suite/player_core/player.h
exc/lock.h exc/lock.cpp Sources/types.h Sources/samples_ticks_converter/converter.h Sources/file_loader/loader.h
Sources/ob_show_control/control.h Sources/audio_player/player.h player_core/player_wrapper/wrapper.h
reference_suite/utility/u.cpp reference_suite/core/c.h reference_suite/midi/m.h reference_suite/audio/output.h
reference_suite/player_core/p.h
reference_suite/midi/standard_midi_file/writer.h host/session/session.h host/session/device_setup.cpp host/session/other.cpp
host/cli/cli.h host/terminal/terminal.h host/demo/demo.h host/main.cpp tests/exc/lock_test.cpp tests/support/watch.h
benchmarks/b.cpp
""".split()

FORBIDDEN = [
    ("exc/lock.h", '"Sources/types.h"'),
    ("exc/lock.h", '"player_core/player_wrapper/wrapper.h"'),
    ("exc/lock.h", '"suite/utility/path.h"'),
    ("exc/lock.cpp", '"suite/core/event.h"'),
    ("suite/utility/path.h", '"exc/lock.h"'),
    ("suite/core/event.h", '"suite/midi/timeline.h"'),
    ("suite/core/event.h", '"Sources/types.h"'),
    ("suite/midi/timeline.h", '"suite/player_core/player.h"'),
    ("suite/midi/timeline.h", '"suite/audio/create.h"'),
    ("suite/player_core/player.h", '"suite/audio/create.h"'),
    ("suite/audio/create.h", '"suite/player_core/player.h"'),
    ("suite/audio/create.h", '"reference_suite/audio/output.h"'),
    ("reference_suite/audio/output.h", '"Sources/types.h"'),
    ("reference_suite/audio/output.h", '"suite/player_core/player.h"'),
    ("reference_suite/audio/output.h", '"reference_suite/midi/m.h"'),
    ("reference_suite/midi/m.h", '"suite/player_core/player.h"'),
    ("reference_suite/core/c.h", '"suite/midi/timeline.h"'),
    ("reference_suite/player_core/p.h", '"player_core/player_wrapper/wrapper.h"'),
    ("reference_suite/player_core/p.h", '"reference_suite/audio/output.h"'),
    ("Sources/types.h", '"exc/lock.h"'),
    ("Sources/audio_player/player.h", '"reference_suite/audio/output.h"'),
    ("player_core/player_wrapper/wrapper.h", '"reference_suite/midi/m.h"'),
    ("Sources/samples_ticks_converter/converter.h", '"suite/audio/create.h"'),
    ("Sources/samples_ticks_converter/converter.h", '"suite/player_core/player.h"'),
    ("Sources/samples_ticks_converter/converter.h", '"Sources/ob_show_control/control.h"'),
    ("Sources/file_loader/loader.h", '"Sources/audio_player/player.h"'),
    ("Sources/file_loader/loader.h", '"suite/midi/timeline.h"'),
    ("Sources/ob_show_control/control.h", '"Sources/audio_player/player.h"'),
    ("Sources/ob_show_control/control.h", '"Sources/file_loader/loader.h"'),
    ("Sources/audio_player/player.h", '"player_core/player_wrapper/wrapper.h"'),
    ("Sources/audio_player/player.h", '"host/session/session.h"'),
    ("host/session/other.cpp", '"reference_suite/audio/output.h"'),
    ("host/session/session.h", '"host/cli/cli.h"'),
    ("host/session/session.h", '"host/terminal/terminal.h"'),
    ("host/cli/cli.h", '"Sources/audio_player/player.h"'),
    ("host/cli/cli.h", '"host/terminal/terminal.h"'),
    ("host/cli/cli.h", '"host/demo/demo.h"'),
    ("host/cli/cli.h", '"suite/audio/create.h"'),
    ("host/demo/demo.h", '"reference_suite/audio/output.h"'),
    ("host/demo/demo.h", '"host/session/session.h"'),
    ("host/terminal/terminal.h", '"host/cli/cli.h"'),
    ("host/terminal/terminal.h", '"Sources/types.h"'),
    ("host/main.cpp", '"Sources/audio_player/player.h"'),
    ("host/main.cpp", '"reference_suite/audio/output.h"'),
    ("exc/lock.h", '"tests/support/watch.h"'),
    ("Sources/audio_player/player.h", '"tests/support/watch.h"'),
    ("host/session/other.cpp", '"benchmarks/b.h"'),
    ("exc/lock.h", "<sndfile.h>"),
    ("suite/audio/create.h", "<boost/optional.hpp>"),
    ("Sources/file_loader/loader.h", "<vorbis/vorbisfile.h>"),
    ("player_core/player_wrapper/wrapper.h", "<toml++/toml.h>"),
    ("reference_suite/audio/output.h", "<CLI/CLI.hpp>"),
    ("reference_suite/audio/output.h", "<nlohmann/json.hpp>"),
    ("host/cli/cli.h", "<sndfile.h>"),
    ("host/cli/cli.h", "<vorbis/vorbisenc.h>"),
    ("host/session/session.h", "<toml++/toml.h>"),
    ("Sources/audio_player/player.h", '"../types.h"'),
    ("tests/exc/lock_test.cpp", '"../support/watch.h"'),
    ("tests/exc/lock_test.cpp", '"exc/lock.cpp"'),
    ("Sources/audio_player/player.h", '"types.h"'),
]

ALLOWED = [
    ("host/demo/demo.h", '"reference_suite/midi/standard_midi_file/writer.h"'),
    ("exc/lock.cpp", '"suite/utility/path.h"'),
    ("suite/core/event.h", '"exc/lock.h"'),
    ("suite/midi/timeline.h", '"suite/core/event.h"'),
    ("suite/player_core/player.h", '"suite/midi/timeline.h"'),
    ("Sources/samples_ticks_converter/converter.h", '"suite/midi/timeline.h"'),
    ("Sources/ob_show_control/control.h", '"Sources/samples_ticks_converter/converter.h"'),
    ("Sources/audio_player/player.h", '"Sources/file_loader/loader.h"'),
    ("player_core/player_wrapper/wrapper.h", '"Sources/audio_player/player.h"'),
    ("reference_suite/audio/output.h", "<sndfile.h>"),
    ("host/demo/demo.h", "<vorbis/vorbisenc.h>"),
    ("reference_suite/player_core/p.h", '"reference_suite/midi/m.h"'),
    ("reference_suite/player_core/p.h", '"suite/audio/create.h"'),
    ("host/session/device_setup.cpp", '"reference_suite/audio/output.h"'),
    ("host/session/device_setup.cpp", '"host/session/session.h"'),
    ("host/session/other.cpp", '"Sources/samples_ticks_converter/converter.h"'),
    ("host/cli/cli.h", '"host/session/session.h"'),
    ("host/cli/cli.h", '"suite/audio/sample_rates.h"'),
    ("host/cli/cli.h", "<CLI/CLI.hpp>"),
    ("host/terminal/terminal.h", "<termios.h>"),
    ("host/main.cpp", '"host/cli/cli.h"'),
    ("host/main.cpp", '"host/terminal/terminal.h"'),
    ("tests/exc/lock_test.cpp", '"reference_suite/audio/output.h"'),
    ("Sources/audio_player/player.h", "<pthread.h>"),
    ("Sources/audio_player/player.h", "<vector>"),
]


class CheckLayers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for name in TREE:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text("#pragma once\n")

    def run_check(self):
        return subprocess.run([sys.executable, CHECK, self.root], capture_output=True, text=True, check=False)

    def test_a_tree_without_includes_is_clean(self):
        result = self.run_check()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn(f"{len(TREE)} files read, 0 forbidden edges", result.stdout)

    def test_an_empty_tree_is_no_proof(self):
        with tempfile.TemporaryDirectory() as empty:
            result = subprocess.run([sys.executable, CHECK, empty], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)

    def test_every_forbidden_edge_is_caught_at_its_line(self):
        for path, include in FORBIDDEN:
            with self.subTest(path=path, include=include):
                before = (self.root / path).read_text()
                (self.root / path).write_text(f"{before}#include {include}\n")
                result = self.run_check()
                (self.root / path).write_text(before)
                self.assertEqual(result.returncode, 1, result.stdout)
                self.assertIn(f"{path}:2: ", result.stdout)

    def test_every_drawn_edge_is_let_through(self):
        for path, include in ALLOWED:
            with self.subTest(path=path, include=include):
                before = (self.root / path).read_text()
                (self.root / path).write_text(f"{before}#include {include}\n")
                result = self.run_check()
                (self.root / path).write_text(before)
                self.assertEqual(result.returncode, 0, result.stdout)

    def test_a_test_switch_in_the_product_is_caught(self):
        (self.root / "Sources/types.h").write_text("#ifdef TEST\n#endif\n")
        result = self.run_check()
        self.assertEqual(result.returncode, 1)
        self.assertIn("Sources/types.h:1: product code asks whether it is compiled for a test", result.stdout)


if __name__ == "__main__":
    unittest.main()
