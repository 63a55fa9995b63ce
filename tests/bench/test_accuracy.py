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

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench"))

import accuracy  # noqa: E402
from transcription import dataset, notes, scoring  # noqa: E402

MELODY = [(0.5, 1.0, 62.0), (1.0, 1.25, 59.0), (1.25, 2.0, 64.0), (2.5, 2.6, 67.0)]


def shifted(index, d_onset=0.0, d_offset=0.0, d_pitch=0.0):
    out = list(MELODY)
    on, off, midi = out[index]
    out[index] = (on + d_onset, off + d_offset, midi + d_pitch)
    return out


class Scoring(unittest.TestCase):
    def test_matching_windows_for_onset_pitch_and_offset_and_octave_errors(self):
        # estimate: (matched, matched_loose, matched_offset, octave_errors)
        cases = [
            (shifted(2, d_onset=0.06), (3, 4, 3, 0)),    # late for ±50 ms, in the loose window
            (shifted(2, d_onset=-0.05), (4, 4, 4, 0)),   # on the edge
            (shifted(0, d_pitch=0.4), (4, 4, 4, 0)),     # within 50 cents
            (shifted(0, d_pitch=0.6), (3, 3, 3, 0)),
            (shifted(2, d_offset=0.14), (4, 4, 4, 0)),   # 20 % of a 0.75 s note
            (shifted(2, d_offset=0.16), (4, 4, 3, 0)),
            (shifted(3, d_offset=0.045), (4, 4, 4, 0)),  # but at least 50 ms
            ([(0.5, 0.5, 62.0), (-0.01, 0.2, 50.0)], (1, 1, 0, 0)),  # scored, not rejected
            (shifted(1, d_pitch=12.0), (3, 3, 3, 1)),    # whole octaves off at a true onset
            (shifted(1, d_pitch=-24.3), (3, 3, 3, 1)),
            (shifted(1, d_onset=0.04, d_pitch=-12.0), (3, 3, 3, 1)),
            (shifted(1, d_pitch=7.0), (3, 3, 3, 0)),     # other wrong notes
            (shifted(1, d_pitch=12.7), (3, 3, 3, 0)),
            (shifted(1, d_onset=0.07, d_pitch=12.0), (3, 3, 3, 0)),
        ]
        for est, want in cases:
            s = scoring.score_file(MELODY, est)
            got = (s["matched"], s["matched_loose"], s["matched_offset"], s["octave_errors"])
            self.assertEqual(got, want, est)
        self.assertAlmostEqual(max(scoring.score_file(MELODY, cases[0][0])["latencies_loose"]),
                               0.06)
        self.assertAlmostEqual(min(scoring.score_file(MELODY, cases[1][0])["latencies"]), -0.05)
        leap = [(1.0, 1.2, 60.0), (1.03, 1.5, 72.0)]  # a correct leap is no octave error
        self.assertEqual(scoring.score_file(leap, leap)["octave_errors"], 0)

    def test_unmatched_estimates_are_told_apart_by_the_true_note_sounding_where_they_start(self):
        kinds = scoring.MISS_KINDS
        cases = [
            (shifted(2, d_onset=0.06), "late"),
            (shifted(2, d_onset=0.16), "struck_again"),
            (shifted(2, d_pitch=-1.2), "semitone"),
            (shifted(2, d_pitch=24.4), "octaves"),
            (shifted(2, d_pitch=2.0), "other_pitch"),
            (shifted(3, d_onset=0.3), "no_true_note"),
            # 40 ms before the next true onset counts against that next note
            (shifted(2, d_onset=-0.04, d_pitch=1.0), "semitone"),
        ]
        for est, kind in cases:
            got = scoring.score_file(MELODY, est)["unmatched"]
            self.assertEqual(got, {k: int(k == kind) for k in kinds}, est)
        twice = scoring.pool([scoring.score_file(MELODY, cases[0][0])] * 2)["unmatched"]
        self.assertEqual(twice["late"], 2)

    def test_scores_pool_across_files_and_a_failed_file_costs_recall(self):
        perfect = scoring.score_file(MELODY, MELODY)
        alone = scoring.pool([perfect])
        self.assertEqual([alone[k] for k in ("f1_onset", "f1_offset", "f1_loose")], [1.0] * 3)
        self.assertEqual((alone["latency_median"], alone["octave_errors"]), (0.0, 0))
        failed = scoring.score_file(MELODY[:1], [])
        pooled = scoring.pool([perfect, failed])
        self.assertEqual(pooled["precision_onset"], 1.0)
        self.assertAlmostEqual(pooled["recall_onset"], 4 / 5)
        self.assertAlmostEqual(pooled["f1_onset"], 2 * 0.8 / 1.8)
        self.assertIsNone(scoring.pool([failed])["latency_median"])


    def test_shared_latency_is_taken_over_the_true_notes_every_converter_matches(self):
        early_but_few = shifted(0, d_onset=0.01)[:2]          # finds notes 0 and 1
        late_but_more = shifted(1, d_onset=0.03)[1:]          # finds notes 1, 2 and 3
        results = {label: {"overall": {}, "files": {"f": scoring.score_file(MELODY, est)}}
                   for label, est in (("a", early_but_few), ("b", late_but_more))}
        scoring.add_shared_latency(results)
        got = {label: (r["overall"]["shared_notes"], r["overall"]["latency_shared_median"])
               for label, r in results.items()}
        self.assertEqual(got["a"], (1, 0.0))
        self.assertEqual(got["b"][0], 1)
        self.assertAlmostEqual(got["b"][1], 0.03)


class Readers(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.addCleanup(self.tmp.cleanup)

    def read_midi(self, tracks, ticks_per_beat=480):
        mid = mido.MidiFile(type=1, ticks_per_beat=ticks_per_beat)
        mid.tracks += [mido.MidiTrack(track) for track in tracks]
        mid.save(os.path.join(self.tmp.name, "t.mid"))
        return notes.read_midi_notes(os.path.join(self.tmp.name, "t.mid"))

    def test_midi_honours_tempo_changes_restrikes_and_hanging_notes(self):
        def on(note, velocity, time):
            return mido.Message("note_on", note=note, velocity=velocity, time=time)
        # 120 bpm, then 60 bpm from 1 s; notes at 0.5-1.0 s and 2.0-2.5 s.
        got = self.read_midi([[mido.MetaMessage("set_tempo", tempo=500000, time=0),
                               mido.MetaMessage("set_tempo", tempo=1000000, time=960)],
                              [on(60, 90, 480), on(60, 0, 480),
                               mido.Message("pitchwheel", pitch=4000, time=0), on(64, 80, 480),
                               mido.Message("note_off", note=64, velocity=0, time=240)]])
        self.assertEqual([(round(a, 7), round(b, 7), m) for a, b, m in got],
                         [(0.5, 1.0, 60), (2.0, 2.5, 64)])
        restruck = self.read_midi([[on(70, 90, 960), on(70, 90, 960),
                                    mido.Message("control_change", control=11, value=64, time=960)]],
                                  960)
        self.assertEqual(restruck, [(0.5, 1.0, 70.0), (1.0, 1.5, 70.0)])

    def test_csv_and_aubio_text_read_only_note_rows(self):
        csv, txt = os.path.join(self.tmp.name, "n.csv"), os.path.join(self.tmp.name, "a.txt")
        with open(csv, "w") as f:
            f.write("onset,offset,midi\n1.5,2.0,61.5\n0.5,1.0,60\n")
        with open(txt, "w") as f:
            f.write("0.574\n71.000000\t0.574\t2.025\n0.000000\t2.1\t2.3\n17.10\n")
        self.assertEqual(notes.read_csv_notes(csv), [(0.5, 1.0, 60.0), (1.5, 2.0, 61.5)])
        self.assertEqual(notes.read_aubio_notes(txt), [(0.574, 2.025, 71.0)])


class Split(unittest.TestCase):
    def test_heldout_is_one_in_three_per_instrument_rotating_and_independent_of_order(self):
        items = [{"id": f"p{i * 4 + k + 1:02d}_inst{k}", "instrument": f"inst{k}"}
                 for i in range(3) for k in range(4)]
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
        items = [{"id": f"p0{n + 1}_{inst}", "instrument": inst, "preset": 18, "program": 73,
                  "duration": 3.0, "audio": f"p0{n + 1}.csv", "gt": f"p0{n + 1}.csv"}
                 for n, inst in enumerate(["flute", "cello"])]
        for item in items:
            with open(os.path.join(self.tmp.name, item["gt"]), "w") as f:
                f.write("onset,offset,midi\n" + "".join(f"{a},{b},{m}\n" for a, b, m in MELODY))
        with open(os.path.join(self.tmp.name, "manifest.json"), "w") as f:
            json.dump({"items": items}, f)

    def test_a_whole_run_measures_reports_failures_and_writes_report_and_json(self):
        report, js = os.path.join(self.tmp.name, "r.md"), os.path.join(self.tmp.name, "r.json")
        busy = ("test {preset}/{program} = 18/73 && cp {in} {out} && /usr/bin/python3 -c "
                "'import time; t = time.process_time()\nwhile time.process_time() - t < 0.2: pass'")
        with redirect_stdout(io.StringIO()), redirect_stderr(io.StringIO()) as err:
            accuracy.main(["--data", self.tmp.name, "-j", "2", "--report", report, "--json", js,
                           "--converter", "copy:csv=" + busy,
                           "--converter", "broken=echo 'cannot open {in}' >&2; exit 3 # {out}",
                           "--converter", "quiet=true {in} {out}"])
        for text in ("broken: p01_flute failed", "exit status 3", "cannot open", "wrote no"):
            self.assertIn(text, err.getvalue())
        with open(js) as f:
            result = json.load(f)["converters"]
        self.assertEqual(result["copy"]["overall"]["f1_onset"], 1.0)
        self.assertGreaterEqual(result["copy"]["overall"]["cpu_per_audio_second"], 0.2 / 3.0)
        self.assertEqual(result["broken"]["overall"]["f1_onset"], 0.0)
        self.assertEqual(result["broken"]["overall"]["failed"], 2)
        self.assertEqual(list(result["copy"]["per_instrument"]), ["flute", "cello"])
        with open(report) as f:
            text = f.read()
        self.assertIn("| **F1, onset ±50 ms (%)** | 100.0 | 0.0 | 0.0 |", text)
        self.assertIn("| another pitch | 0 | 0 | 0 |", text)


if __name__ == "__main__":
    unittest.main()
