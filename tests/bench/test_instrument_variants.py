"""Every note played alone: the notes come back from the written file each on its own, at the
spacing asked for, with their own lengths, pitches and velocities."""

import os
import sys
import tempfile
import unittest

import mido

BENCH = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench")
sys.path.insert(0, BENCH)

from instrument_variants import spread_midi, spread_out  # noqa: E402


class Apart(unittest.TestCase):
    def test_the_notes_of_a_legato_melody_come_back_each_alone(self):
        melody = [(0.5, 0.75, 60, 90), (0.75, 1.25, 62, 70), (1.25, 1.3, 60, 110)]
        with tempfile.TemporaryDirectory() as work:
            source, spread = os.path.join(work, "melody.mid"), os.path.join(work, "spread.mid")
            song = mido.MidiFile(ticks_per_beat=480)
            track = mido.MidiTrack([mido.MetaMessage("set_tempo", tempo=500000),
                                    mido.Message("program_change", program=65)])
            song.tracks.append(track)
            events = sorted([(on, 1, note, v) for on, _, note, v in melody] +
                            [(off, 0, note, 0) for _, off, note, _ in melody])
            last = 0
            for at, _, note, velocity in events:
                tick = round(at * 960)
                track.append(mido.Message("note_on", note=note, velocity=velocity, time=tick - last))
                last = tick
            song.save(source)
            spread_midi(source, spread, 2.0)

            played, sounding, now = [], {}, 0.0
            for message in mido.MidiFile(spread):
                now += message.time
                if message.type == "program_change":
                    self.assertEqual(message.program, 65)
                elif message.type == "note_on" and message.velocity > 0:
                    self.assertFalse(sounding, "one note at a time")
                    sounding[message.note] = (now, message.velocity)
                elif message.type in ("note_on", "note_off"):
                    on, velocity = sounding.pop(message.note)
                    played.append((round(on, 3), round(now, 3), message.note, velocity))
        self.assertEqual(played, [(0.5, 0.75, 60, 90), (2.5, 3.0, 62, 70), (4.5, 4.55, 60, 110)])
        alone = spread_out([(on, off, n) for on, off, n, _ in melody], 2.0)
        self.assertEqual([tuple(round(x, 3) for x in note) for note in alone],
                         [(0.5, 0.75, 60), (2.5, 3.0, 62), (4.5, 4.55, 60)])


if __name__ == "__main__":
    unittest.main()
