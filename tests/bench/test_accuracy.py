"""The scorer's own logic: matching windows, pooling, octave errors, the readers, the split and
a whole run over a tiny made-up data set."""

import io
import json
import os
import random
import sys
import tempfile
import unittest
from contextlib import redirect_stdout, redirect_stderr

import mido

BENCH_DIR = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench")
sys.path.insert(0, BENCH_DIR)

import accuracy  # noqa: E402
from transcription import dataset, notes, scoring  # noqa: E402
from transcription.converters import Converter, run_file  # noqa: E402

MELODY = [(0.5, 1.0, 62.0), (1.0, 1.25, 59.0), (1.25, 2.0, 64.0), (2.5, 2.6, 67.0)]


def shifted(melody, index, d_onset=0.0, d_offset=0.0, d_pitch=0.0):
    out = list(melody)
    on, off, midi = out[index]
    out[index] = (on + d_onset, off + d_offset, midi + d_pitch)
    return out


class MatchingFollowsTheBenchmarkConventions(unittest.TestCase):
    def test_a_perfect_estimate_scores_one_with_zero_latency_and_no_octave_errors(self):
        pooled = scoring.pool([scoring.score_file(MELODY, MELODY)])
        for key in ("f1_onset", "f1_offset", "f1_loose", "precision_onset", "recall_onset"):
            self.assertEqual(pooled[key], 1.0, key)
        self.assertEqual((pooled["latency_median"], pooled["latency_p90"]), (0.0, 0.0))
        self.assertEqual(pooled["octave_errors"], 0)

    def test_an_onset_60_ms_late_misses_the_strict_window_but_matches_the_loose_one(self):
        s = scoring.score_file(MELODY, shifted(MELODY, 2, d_onset=0.06))
        self.assertEqual((s["matched"], s["matched_loose"]), (3, 4))
        self.assertAlmostEqual(max(s["latencies_loose"]), 0.06)
        on_edge = scoring.score_file(MELODY, shifted(MELODY, 2, d_onset=-0.05))
        self.assertEqual(on_edge["matched"], 4)
        self.assertAlmostEqual(min(on_edge["latencies"]), -0.05)

    def test_pitch_must_be_within_50_cents(self):
        self.assertEqual(scoring.score_file(MELODY, shifted(MELODY, 0, d_pitch=0.4))["matched"], 4)
        self.assertEqual(scoring.score_file(MELODY, shifted(MELODY, 0, d_pitch=0.6))["matched"], 3)

    def test_offsets_need_20_percent_of_the_length_but_at_least_50_ms(self):
        long_ok = scoring.score_file(MELODY, shifted(MELODY, 2, d_offset=0.14))  # 0.75 s note
        long_bad = scoring.score_file(MELODY, shifted(MELODY, 2, d_offset=0.16))
        short_ok = scoring.score_file(MELODY, shifted(MELODY, 3, d_offset=0.045))  # 0.1 s note
        self.assertEqual([s["matched_offset"] for s in (long_ok, long_bad, short_ok)], [4, 3, 4])
        self.assertEqual(long_bad["matched"], 4)

    def test_instant_and_negative_time_estimates_are_scored_instead_of_rejected(self):
        est = [(0.5, 0.5, 62.0), (-0.01, 0.2, 50.0)]
        s = scoring.score_file(MELODY, est)
        self.assertEqual((s["n_est"], s["matched"], s["matched_offset"]), (2, 1, 0))

    def test_scores_pool_notes_across_files_and_a_failed_file_costs_recall(self):
        perfect = scoring.score_file(MELODY, MELODY)
        failed = scoring.score_file(MELODY[:1], [])
        pooled = scoring.pool([perfect, failed])
        self.assertEqual(pooled["precision_onset"], 1.0)
        self.assertAlmostEqual(pooled["recall_onset"], 4 / 5)
        self.assertAlmostEqual(pooled["f1_onset"], 2 * 0.8 / 1.8)
        self.assertIsNone(scoring.pool([failed])["latency_median"])


class OctaveErrors(unittest.TestCase):
    def count(self, est):
        return scoring.score_file(MELODY, est)["octave_errors"]

    def test_whole_octaves_off_at_a_true_onset_are_counted(self):
        self.assertEqual(self.count(shifted(MELODY, 1, d_pitch=12.0)), 1)
        self.assertEqual(self.count(shifted(MELODY, 1, d_pitch=-24.3)), 1)
        self.assertEqual(self.count(shifted(MELODY, 1, d_onset=0.04, d_pitch=-12.0)), 1)

    def test_other_wrong_notes_are_not_octave_errors(self):
        self.assertEqual(self.count(shifted(MELODY, 1, d_pitch=7.0)), 0)
        self.assertEqual(self.count(shifted(MELODY, 1, d_pitch=12.7)), 0)
        self.assertEqual(self.count(shifted(MELODY, 1, d_onset=0.07, d_pitch=12.0)), 0)

    def test_a_correct_note_near_an_octave_leap_is_not_an_octave_error(self):
        leap = [(1.0, 1.2, 60.0), (1.03, 1.5, 72.0)]
        self.assertEqual(scoring.score_file(leap, leap)["octave_errors"], 0)


class Readers(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.addCleanup(self.tmp.cleanup)

    def path(self, name):
        return os.path.join(self.tmp.name, name)

    def test_midi_honours_tempo_changes_and_velocity_zero_note_offs(self):
        mid = mido.MidiFile(type=1, ticks_per_beat=480)
        meta, track = mido.MidiTrack(), mido.MidiTrack()
        mid.tracks += [meta, track]
        meta.append(mido.MetaMessage("set_tempo", tempo=500000, time=0))      # 120 bpm
        meta.append(mido.MetaMessage("set_tempo", tempo=1000000, time=960))   # 60 bpm at 1 s
        track.append(mido.Message("note_on", note=60, velocity=90, time=480))  # 0.5 s
        track.append(mido.Message("note_on", note=60, velocity=0, time=480))   # 1.0 s
        track.append(mido.Message("pitchwheel", pitch=4000, time=0))
        track.append(mido.Message("note_on", note=64, velocity=80, time=480))  # 2.0 s
        track.append(mido.Message("note_off", note=64, velocity=0, time=240))  # 2.5 s
        mid.save(self.path("t.mid"))
        got = notes.read_midi_notes(self.path("t.mid"))
        self.assertEqual(len(got), 2)
        for (on, off, midi), want in zip(got, [(0.5, 1.0, 60), (2.0, 2.5, 64)]):
            self.assertAlmostEqual(on, want[0])
            self.assertAlmostEqual(off, want[1])
            self.assertEqual(midi, want[2])

    def test_midi_restrikes_and_hanging_notes_end_cleanly(self):
        mid = mido.MidiFile(type=0, ticks_per_beat=960)
        track = mido.MidiTrack()
        mid.tracks.append(track)
        track.append(mido.Message("note_on", note=70, velocity=90, time=960))
        track.append(mido.Message("note_on", note=70, velocity=90, time=960))
        track.append(mido.Message("control_change", control=11, value=64, time=960))
        mid.save(self.path("r.mid"))
        self.assertEqual(notes.read_midi_notes(self.path("r.mid")),
                         [(0.5, 1.0, 70.0), (1.0, 1.5, 70.0)])

    def test_csv_and_aubio_text_read_only_note_rows(self):
        with open(self.path("n.csv"), "w") as f:
            f.write("onset,offset,midi\n1.5,2.0,61.5\n0.5,1.0,60\n")
        with open(self.path("a.txt"), "w") as f:
            f.write("0.574\n71.000000\t0.574\t2.025\n0.000000\t2.1\t2.3\n17.10\n")
        self.assertEqual(notes.read_csv_notes(self.path("n.csv")),
                         [(0.5, 1.0, 60.0), (1.5, 2.0, 61.5)])
        self.assertEqual(notes.read_aubio_notes(self.path("a.txt")), [(0.574, 2.025, 71.0)])


def made_up_items(instruments=4, per_instrument=3):
    return [{"id": f"p{i * instruments + k + 1:02d}_inst{k}", "instrument": f"inst{k}"}
            for i in range(per_instrument) for k in range(instruments)]


class Split(unittest.TestCase):
    def test_heldout_is_one_in_three_per_instrument_rotating_and_independent_of_order(self):
        items = made_up_items()
        held = dataset.heldout_ids(items)
        self.assertEqual(held, {"p09_inst0", "p06_inst1", "p03_inst2", "p12_inst3"})
        random.Random(7).shuffle(items)
        self.assertEqual(dataset.heldout_ids(items), held)
        dev = {i["id"] for i in dataset.select_split(items, "dev")}
        heldout = {i["id"] for i in dataset.select_split(items, "heldout")}
        self.assertEqual((heldout, dev & heldout, len(dev | heldout)), (held, set(), 12))


class RunningConverters(unittest.TestCase):
    """A tiny data set whose 'audio' files are note CSVs, so `cp` is a perfect converter."""

    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.addCleanup(self.tmp.cleanup)
        root = self.tmp.name
        items = []
        for n, inst in enumerate(["flute", "cello"]):
            file_id = f"p0{n + 1}_{inst}"
            for folder in ("audio", "gt"):
                os.makedirs(os.path.join(root, folder), exist_ok=True)
                with open(os.path.join(root, folder, file_id + ".csv"), "w") as f:
                    f.write("onset,offset,midi\n")
                    f.writelines(f"{a},{b},{m}\n" for a, b, m in MELODY)
            items.append({"id": file_id, "instrument": inst, "preset": 18, "program": 73,
                          "duration": 3.0, "audio": f"audio/{file_id}.csv",
                          "gt": f"gt/{file_id}.csv"})
        with open(os.path.join(root, "manifest.json"), "w") as f:
            json.dump({"items": items}, f)
        self.item = dict(items[0], audio=os.path.join(root, items[0]["audio"]))

    def test_a_failing_converter_reports_its_stderr_and_counts_as_no_notes(self):
        bad = Converter("bad", "echo 'cannot open {in}' >&2; exit 3 # {out}")
        result = run_file(bad, self.item, self.tmp.name, timeout=30)
        self.assertEqual(result["notes"], [])
        self.assertIn("exit status 3", result["error"])
        self.assertIn("cannot open", result["error"])
        quiet = Converter("quiet", "true {in} {out}")
        self.assertIn("wrote no", run_file(quiet, self.item, self.tmp.name, 30)["error"])

    def test_placeholders_are_filled_and_the_cpu_of_grandchildren_is_measured(self):
        busy = Converter.parse(
            "busy:csv=test {preset}/{program} = 18/73 && cp {in} {out} && "
            "/usr/bin/python3 -c 'import time; t = time.process_time()\n"
            "while time.process_time() - t < 0.2: pass'")
        result = run_file(busy, self.item, self.tmp.name, timeout=30)
        self.assertIsNone(result["error"])
        self.assertEqual(result["notes"], MELODY)
        self.assertGreaterEqual(result["cpu"], 0.2)

    def test_a_whole_run_writes_side_by_side_report_and_json(self):
        report, js = os.path.join(self.tmp.name, "r.md"), os.path.join(self.tmp.name, "r.json")
        with redirect_stdout(io.StringIO()), redirect_stderr(io.StringIO()) as err:
            accuracy.main(["--data", self.tmp.name, "-j", "2", "--report", report, "--json", js,
                           "--converter", "copy:csv=cp {in} {out}",
                           "--converter", "broken=exit 1 {in} {out}"])
        self.assertIn("broken: p01_flute failed", err.getvalue())
        with open(js) as f:
            result = json.load(f)["converters"]
        self.assertEqual(result["copy"]["overall"]["f1_onset"], 1.0)
        self.assertEqual(result["broken"]["overall"]["f1_onset"], 0.0)
        self.assertEqual(result["broken"]["overall"]["failed"], 2)
        self.assertEqual(list(result["copy"]["per_instrument"]), ["flute", "cello"])
        with open(report) as f:
            text = f.read()
        self.assertIn("| **F1, onset ±50 ms (%)** | 100.0 | 0.0 |", text)


if __name__ == "__main__":
    unittest.main()
