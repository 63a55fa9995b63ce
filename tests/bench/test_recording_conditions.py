"""The recording conditions script on a tiny made-up data set: each condition changes the sound
by what it says, and the set it writes is one the accuracy harness can read."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
import wave

import numpy as np

BENCH = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench")
sys.path.insert(0, BENCH)

from transcription import dataset, notes  # noqa: E402

RATE = 44100


def read(path):
    with wave.open(path) as w:
        return np.frombuffer(w.readframes(w.getnframes()), dtype=np.int16).astype(float), w.getframerate()


def db(ratio):
    return 20 * np.log10(ratio)


class RecordingConditions(unittest.TestCase):
    def setUp(self):
        self.work = tempfile.TemporaryDirectory()
        self.addCleanup(self.work.cleanup)
        self.data = os.path.join(self.work.name, "data")
        os.makedirs(os.path.join(self.data, "audio"))
        os.makedirs(os.path.join(self.data, "gt"))
        t = np.arange(RATE) / RATE
        tone = np.where((t >= 0.25) & (t < 0.5), 8000 * np.sin(2 * np.pi * 440 * t), 0.0)  # A4 in silence
        items = []
        for name in ("p01_flute_a", "slide-p13_flute_b"):  # a derived set names its melody inside
            with wave.open(os.path.join(self.data, "audio", name + ".wav"), "wb") as w:
                w.setnchannels(1), w.setsampwidth(2), w.setframerate(RATE)
                w.writeframes(tone.astype(np.int16).tobytes())
            with open(os.path.join(self.data, "gt", name + ".csv"), "w") as f:
                f.write("onset,offset,midi\n0.2500,0.5000,69\n")
            items.append({"id": name, "audio": f"audio/{name}.wav", "gt": f"gt/{name}.csv",
                          "instrument": "flute", "preset": 18, "program": 73})
        with open(os.path.join(self.data, "manifest.json"), "w") as f:
            json.dump({"items": items}, f)
        self.tone = tone

    def run_condition(self, *arguments):
        out = os.path.join(self.work.name, arguments[0])
        subprocess.run(["/usr/bin/python3", os.path.join(BENCH, "recording_conditions.py"), out, *arguments,
                        "--data", self.data, "--melodies", "1", "12"], check=True, capture_output=True)
        items = dataset.load_manifest(out)
        self.assertEqual([item["id"] for item in items], ["p01_flute_a"], "only the chosen melodies")
        self.assertTrue(os.path.exists(items[0]["gt"]))
        return read(items[0]["audio"])

    def test_each_condition_changes_the_sound_by_what_it_says(self):
        sounding = slice(RATE // 4, RATE // 2)
        active = np.sqrt(np.mean(self.tone[sounding] ** 2))
        noisy, _ = self.run_condition("noise", "--db", "20")
        self.assertAlmostEqual(db(np.sqrt(np.mean((noisy - self.tone) ** 2)) / active), -20, delta=0.3)
        quieter, _ = self.run_condition("quieter", "--db", "20")
        self.assertAlmostEqual(db(np.sqrt(np.mean(quieter[sounding] ** 2)) / active), -20, delta=0.05)
        hummed, _ = self.run_condition("hum", "--db", "40")
        fifty = 2 * abs(np.mean((hummed - self.tone) * np.exp(-2j * np.pi * 50 * np.arange(RATE) / RATE)))
        self.assertAlmostEqual(db(fifty / 32768), -40, delta=0.3)
        resampled, rate = self.run_condition("rate", "--rate", "48000")
        self.assertEqual(rate, 48000)
        self.assertAlmostEqual(resampled.size / rate, 1.0, delta=0.001)
        swung, _ = self.run_condition("tremolo", "--db", "9")
        windows = swung[sounding].reshape(-1, RATE // 100)
        levels = db(np.sqrt(np.mean(windows**2, axis=1)) / active)
        self.assertAlmostEqual(levels.max(), 0, delta=0.2, msg="the peaks keep the level")
        self.assertAlmostEqual(levels.min(), -9, delta=0.3)
        reverberant, _ = self.run_condition("reverb")
        after = slice(int(0.55 * RATE), int(0.7 * RATE))
        self.assertGreater(db(np.sqrt(np.mean(reverberant[after] ** 2)) / active), -40, "the room rings on")

    def test_a_delay_moves_the_true_notes_with_the_sound(self):
        delayed, _ = self.run_condition("delay", "--samples", "11")
        np.testing.assert_array_equal(delayed, np.concatenate([np.zeros(11), self.tone.astype(np.int16)]))
        later = 11 / RATE
        self.assertEqual(notes.read_csv_notes(os.path.join(self.work.name, "delay", "gt", "p01_flute_a.csv")),
                         [(round(0.25 + later, 6), round(0.5 + later, 6), 69.0)])


if __name__ == "__main__":
    unittest.main()
