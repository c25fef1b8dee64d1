"""Every kind of forbidden word is found with its line, and look-alikes are not. The words are put together here,
because the check reads this file too."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = pathlib.Path(__file__).resolve().parents[2] / "tools" / "check_words.py"

FORBIDDEN = [
    "see " + "Part" + " 4.2", "as " + "Parts" + " 1.1 and 2.3 say", "// " + "spec" + ".md", "The " + "Specification says",
    "traps" + ".md", "outputs" + ".md", 'path = "/wo' + 'rk/show"', "/ro" + "ot/x", "/tm" + "p/x.wav",
    "// TO" + "DO: later", "// FIX" + "ME", "XX" + "X", "TEST(A, DISA" + "BLED_B)", "#if" + " 0", "  # if" + " 0",
]
HARMLESS = [
    "part 4 of the song", "a part", "specification of the format", "/usr/share", "show-format.md", "X" * 6, "todo list",
    "framework/", "#if 0x10 > 2", "partial 4.2",
]


class CheckWords(unittest.TestCase):
    def check(self, text):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "file.h").write_text(f"first\n{text}\n")
            return subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True, check=False)

    def test_every_forbidden_word_is_found_at_its_line(self):
        for text in FORBIDDEN:
            with self.subTest(text=text):
                result = self.check(text)
                self.assertEqual(result.returncode, 1)
                self.assertIn("file.h:2: ", result.stdout)

    def test_look_alikes_are_left_alone(self):
        for text in HARMLESS:
            with self.subTest(text=text):
                result = self.check(text)
                self.assertEqual(result.returncode, 0, result.stdout)
                self.assertIn("1 files read, 0 finds", result.stdout)

    def test_an_empty_tree_is_no_proof(self):
        with tempfile.TemporaryDirectory() as folder:
            result = subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True, check=False)
        self.assertEqual(result.returncode, 1)


if __name__ == "__main__":
    unittest.main()
