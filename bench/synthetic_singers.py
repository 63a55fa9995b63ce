#!/usr/bin/env python3
"""Stress sets of synthetic singing, with known notes, in the benchmark's layout.

The public melodies' voices are rendered by one synthesizer with little vibrato. This script
sings the melodies of the voice files again with what real singers add: a vowel-filtered
harmonic source, vibrato of +-50 cents at 5-6 Hz that grows in over 150 ms, breath noise, and
one of two ways of joining legato notes:

  slide    one voice glides into each legato note (a scoop over --glide seconds)
  overlap  each note is its own voice that rises over --rise seconds and, after its end, fades
           by 1/e every --fade seconds under the next one (a choir, a room, a synthesizer)

In slide mode the voice may also begin each note after a rest --scoop semitones flat and rise
into it over --scoop-time seconds, and sing each note up to --detune cents off its pitch, as
untrained singers do; with --phrase-vibrato one vibrato runs on through each legato phrase, as
trained singers keep it across their steps, so a step may land anywhere in a swing. With
--words each note is a syllable of a text: its own vowel, and before it (in the note before or
the rest) a consonant that dips the voice (l, m, n), closes it (d, t, k) or replaces it with
hiss (s, h); the pitch drifts by a few cents and the level swells and sinks as a voice's do.
Where a consonant stops the voice, the note before ends where it stops. --jitter and --shimmer
make each cycle of the voice a little longer or shorter and louder or softer than the one
before, as in a rough or tired voice (--jitter 0.5 measures about 0.6 % local jitter, a healthy
voice; 1 about 1.1 %, where clinics begin to call a voice rough). --transpose moves every note,
so that --transpose -12 sings the melodies in a baritone's register; --preset then names the
input preset to convert them with (2, the male voice, whose range reaches down to C2).

    python3 bench/synthetic_singers.py slide /tmp/slide
    python3 bench/synthetic_singers.py slide /tmp/scoop --scoop 1
    python3 bench/synthetic_singers.py slide /tmp/words --words
    python3 bench/synthetic_singers.py slide /tmp/rough --jitter 1 --shimmer 0.5
    python3 bench/synthetic_singers.py slide /tmp/baritone --transpose -12 --preset 2
    python3 bench/accuracy.py --data /tmp/slide --converter precise='...' --split all

The output directory gets audio/*.wav, gt/*.csv and a manifest.json that accuracy.py reads.
"""

import argparse
import os
import sys
import wave

import numpy as np

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from transcription.dataset import default_data_dir, load_manifest, write_manifest  # noqa: E402
from transcription.notes import read_csv_notes  # noqa: E402

RATE = 44100
VOICES = ("choir_aahs", "voice_oohs", "synth_voice")
# First three formants (centre, bandwidth in Hz) of four vowels.
VOWELS = ([(730, 90), (1090, 110), (2440, 170)], [(570, 80), (840, 100), (2410, 170)],
          [(300, 60), (870, 100), (2240, 170)], [(530, 80), (1840, 120), (2480, 170)])
# A nasal or a voice bar: the mouth closed, the sound dull.
CLOSED = [(250, 100), (1000, 300), (2200, 300)]
# How a consonant treats the voice: the level it leaves it at (dB under the vowel; None: the
# voice stops), the hiss it adds (its band in Hz and level in dB under the vowel), and how often
# it comes.
CONSONANTS = {
    "none": dict(voice=0, hiss=None, share=0.15),
    "lmn": dict(voice=-16, hiss=None, share=0.3),
    "d": dict(voice=-30, hiss=((1500, 5000), -20), share=0.15),
    "tk": dict(voice=None, hiss=((1500, 6000), -14), share=0.25),
    "sh": dict(voice=None, hiss=((3500, 8000), -18), share=0.15),
}


def frequency(note):
    return 440.0 * 2 ** ((note - 69) / 12)


def vibrato_cents(t, depth, rng, rate=None, phase=None):
    rate = rng.uniform(5, 6) if rate is None else rate
    phase = rng.uniform(0, 2 * np.pi) if phase is None else phase
    return depth * np.clip(t / 0.15, 0, 1) * np.sin(2 * np.pi * rate * t + phase)


def cycle_to_cycle(f, args, rng):
    """Vocal folds never repeat a cycle exactly: each cycle's period is off by --jitter percent
    and its amplitude by --shimmer dB (standard deviations, drawn anew per cycle; the amplitude
    moves from one cycle's to the next's across the cycle). Returns the frequency and gain."""
    if not args.jitter and not args.shimmer:
        return f, 1.0
    cycles = np.cumsum(f) / RATE
    count = int(cycles[-1]) + 2
    period = 1 + args.jitter / 100 * rng.standard_normal(count)
    gain_db = args.shimmer * rng.standard_normal(count)
    return f / period[cycles.astype(int)], 10 ** (np.interp(cycles, np.arange(count), gain_db) / 20)


def voiced(f, vowel, args, rng):
    """A harmonic source with a gentle spectral slope through the vowel's formants, below 5 kHz.

    A formant's centre may be one number or one per sample (a vowel that changes)."""
    f, gain = cycle_to_cycle(f, args, rng)
    phase = 2 * np.pi * np.cumsum(f) / RATE
    out = np.zeros(len(f))
    for k in range(1, 40):
        fk = f * k
        weight = (0.15 + sum(1 / (1 + ((fk - centre) / width) ** 2) for centre, width in vowel)) / k ** 0.7
        out += np.where(fk < 5000, weight, 0) * np.sin(k * phase)
    return out * gain


def is_legato(notes, i):
    return i > 0 and notes[i][0] - notes[i - 1][1] < 0.01


def slide(notes, length, vowel, args, rng):
    f = np.full(length, frequency(notes[0][2]))
    detune = rng.uniform(-args.detune, args.detune, len(notes)) if args.detune else np.zeros(len(notes))
    level = np.zeros(length)
    phrase_start = 0.0
    plan = syllables(notes, rng) if args.words else None
    for i, (on, off, note) in enumerate(notes):
        s, e = int(on * RATE), int(off * RATE)
        t = np.arange(e - s) / RATE
        if args.phrase_vibrato:
            # One vibrato through each legato phrase, as a singer keeps it across the steps.
            if not is_legato(notes, i):
                phrase_start, rate, phase = on, rng.uniform(5, 6), rng.uniform(0, 2 * np.pi)
            cents = vibrato_cents(t + (on - phrase_start), args.vibrato, rng, rate, phase)
        else:
            cents = vibrato_cents(t, args.vibrato, rng)
        consonant = plan[i] if plan else ("none", 0.0)
        if is_legato(notes, i) and args.glide > 0 and consonant[0] == "none":
            cents += 100 * (notes[i - 1][2] - note) * np.clip(1 - t / args.glide, 0, 1) ** 2
        elif not is_legato(notes, i) and args.scoop > 0:
            cents -= 100 * args.scoop * np.clip(1 - t / args.scoop_time, 0, 1) ** 2
        f[s:e] = frequency(note) * 2 ** ((cents + detune[i]) / 1200)
        start = s - int(min(consonant[1], args.glide) * RATE)
        if is_legato(notes, i) and CONSONANTS[consonant[0]]["voice"] is not None and start < s:
            # In a voiced consonant the pitch moves on to the next note, arriving with the vowel.
            x = np.linspace(0, 1, s - start)
            f[start:s] = f[start] * (f[s] / f[start]) ** (1 - (1 - x) ** 2)
        envelope = np.ones(e - s)
        if not is_legato(notes, i):
            envelope[:int(0.04 * RATE)] = np.linspace(0, 1, int(0.04 * RATE))
        if not (i + 1 < len(notes) and is_legato(notes, i + 1)):
            k = min(int(0.05 * RATE), e - s)
            envelope[-k:] *= np.linspace(1, 0, k)
        level[s:e] = envelope
    if args.words:
        return words(notes, plan, f, level, args, rng)
    return voiced(f, vowel, args, rng) * level, level, notes


def band_noise(length, low, high, rng):
    spectrum = np.fft.rfft(rng.standard_normal(length))
    hz = np.fft.rfftfreq(length, 1 / RATE)
    spectrum[(hz < low) | (hz > high)] = 0
    noise = np.fft.irfft(spectrum, length)
    return noise / (np.std(noise) + 1e-12)


def slow_wander(length, spread, seconds, rng):
    """Random wandering with the given standard deviation that changes over about `seconds`."""
    steps = length // 441 + 2
    walk = np.zeros(steps)
    pull = np.exp(-0.01 / seconds)
    for i, kick in enumerate(rng.standard_normal(steps)[1:], start=1):
        walk[i] = pull * walk[i - 1] + kick
    walk *= spread / (np.std(walk) + 1e-12)
    return np.interp(np.arange(length) / 441, np.arange(steps), walk)


def syllables(notes, rng):
    """Each note's consonant and how long it takes before the vowel (from the rest or the note
    before, at most 80 ms and 40 % of that note)."""
    kinds, shares = list(CONSONANTS), [CONSONANTS[k]["share"] for k in CONSONANTS]
    plan = []
    for i, (on, _, _) in enumerate(notes):
        kind = rng.choice(kinds, p=shares)
        if not is_legato(notes, i) and CONSONANTS[kind]["voice"] is not None:
            kind = "none"  # after a rest, only a consonant that does not sound the voice
        room = on if i == 0 else (on - notes[i - 1][1]) + 0.4 * (notes[i - 1][1] - notes[i - 1][0])
        plan.append((kind, min(rng.uniform(0.04, 0.08), room) if kind != "none" else 0.0))
    return plan


def words(notes, plan, f, level, args, rng):
    """Sings each note as a syllable; returns the sound, the voice's level and the notes as sung."""
    length = len(f)
    f = f * 2 ** (slow_wander(length, 6, 0.3, rng) / 1200)
    level = level * 10 ** (slow_wander(length, 1.5, 0.2, rng) / 20)
    formants = [(np.full(length, float(c)), np.full(length, float(w))) for c, w in VOWELS[0]]
    closed = np.zeros(length)
    hiss = {kind: np.zeros(length) for kind, consonant in CONSONANTS.items() if consonant["hiss"]}
    sung = [list(n) for n in notes]
    for i, (on, _, _) in enumerate(notes):
        s = int(on * RATE)
        vowel = VOWELS[rng.integers(len(VOWELS))]
        for (centre, width), (c, w) in zip(formants, vowel):
            # The mouth moves to the new vowel over 30 ms.
            k = min(int(0.03 * RATE), length - s)
            before = centre[s - 1] if s > 0 else c
            centre[s:], width[s:] = c, w
            centre[s:s + k] = np.linspace(before, c, k)
        kind, seconds = plan[i]
        start = s - int(seconds * RATE)
        consonant = CONSONANTS[kind]
        if start >= s:
            continue
        x = np.linspace(0, 1, s - start)
        if consonant["voice"] is None:
            # The voice stops within 10 ms and comes back over 15 ms with the vowel.
            fall = min(int(0.01 * RATE), s - start)
            level[start:start + fall] *= np.linspace(1, 0, fall)
            level[start + fall:s] = 0
        elif kind == "lmn":
            level[start:s] *= 10 ** (consonant["voice"] * np.sin(np.pi * x) / 20)
            closed[start:s] = np.maximum(closed[start:s], np.sin(np.pi * x))
        else:
            level[start:s] *= 10 ** (consonant["voice"] / 20)
            closed[start:s] = 1
        if consonant["voice"] is None or kind == "d":
            rise = int(0.015 * RATE)
            level[s:s + rise] *= np.linspace(0, 1, len(level[s:s + rise]))
            if i > 0:
                sung[i - 1][1] = min(sung[i - 1][1], start / RATE)
        if kind in hiss:
            # Stops end in a burst that dies away; a hiss rises and holds until the vowel.
            burst = np.exp(-(1 - x) * (s - start) / (0.012 * RATE)) if kind in ("d", "tk") else np.minimum(1, x * 4)
            hiss[kind][start:s] = burst
    mouth = [(c * (1 - closed) + cc * closed, w * (1 - closed) + cw * closed)
             for (c, w), (cc, cw) in zip(formants, CLOSED)]
    voice = voiced(f, mouth, args, rng) * level
    loud = np.sqrt(np.mean(voice[level > 0.5] ** 2)) if np.any(level > 0.5) else 1.0
    for kind, envelope in hiss.items():
        if np.any(envelope):
            (low, high), db = CONSONANTS[kind]["hiss"]
            voice += band_noise(length, low, high, rng) * envelope * loud * 10 ** (db / 20)
    return voice, level, [tuple(n) for n in sung]


def overlap(notes, length, vowel, args, rng):
    out = np.zeros(length)
    for on, off, note in notes:
        s, e = int(on * RATE), min(length, int((off + 6 * args.fade) * RATE))
        t = np.arange(e - s) / RATE
        f = frequency(note) * 2 ** (vibrato_cents(t, args.vibrato, rng) / 1200)
        held = off - on
        envelope = np.clip(t / args.rise, 0, 1) * np.where(t < held, 1.0, np.exp(-(t - held) / args.fade))
        out[s:e] += voiced(f, vowel, args, rng) * envelope
    return out, np.ones(length), notes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("mode", choices=("slide", "overlap"))
    parser.add_argument("out")
    parser.add_argument("--vibrato", type=float, default=50, help="vibrato depth in cents (default 50)")
    parser.add_argument("--phrase-vibrato", action="store_true",
                        help="slide: one vibrato runs on through each legato phrase instead of starting anew with each note")
    parser.add_argument("--glide", type=float, default=0.03, help="slide into legato notes, s (default 0.03)")
    parser.add_argument("--scoop", type=float, default=0, help="slide: notes after a rest start this many semitones flat (default 0)")
    parser.add_argument("--scoop-time", type=float, default=0.08, help="slide: how long the scoop takes, s (default 0.08)")
    parser.add_argument("--detune", type=float, default=0, help="slide: each note off its pitch by up to this many cents (default 0)")
    parser.add_argument("--rise", type=float, default=0.05, help="overlap: attack time, s (default 0.05)")
    parser.add_argument("--fade", type=float, default=0.08, help="overlap: release time constant, s (default 0.08)")
    parser.add_argument("--words", action="store_true",
                        help="slide: sing each note as a syllable, a consonant before its own vowel")
    parser.add_argument("--breath", type=float, default=-30, help="breath noise level, dB (default -30)")
    parser.add_argument("--transpose", type=int, default=0,
                        help="sing every note this many semitones higher (default 0)")
    parser.add_argument("--preset", type=int, help="the input preset to convert with (default the melody's own)")
    parser.add_argument("--jitter", type=float, default=0, help="each cycle's period off by this many percent (s.d., default 0)")
    parser.add_argument("--shimmer", type=float, default=0, help="each cycle's amplitude off by this many dB (s.d., default 0)")
    args = parser.parse_args()

    rng = np.random.default_rng(7)
    data = default_data_dir(os.path.dirname(os.path.abspath(__file__)))
    os.makedirs(os.path.join(args.out, "audio"), exist_ok=True)
    os.makedirs(os.path.join(args.out, "gt"), exist_ok=True)
    items = []
    for item in load_manifest(data):
        if item["instrument"] not in VOICES:
            continue
        notes = [(on, off, note + args.transpose) for on, off, note in read_csv_notes(item["gt"])]
        length = int((notes[-1][1] + 1.0) * RATE)
        sing = slide if args.mode == "slide" else overlap
        y, level, notes = sing(notes, length, VOWELS[len(items) % len(VOWELS)], args, rng)
        y = y / (np.max(np.abs(y)) + 1e-9) + rng.standard_normal(length) * 0.3 * 10 ** (args.breath / 20) * level
        file_id = f"{args.mode}-{item['id']}"
        with wave.open(os.path.join(args.out, "audio", file_id + ".wav"), "wb") as w:
            w.setnchannels(1)
            w.setsampwidth(2)
            w.setframerate(RATE)
            w.writeframes((np.clip(0.5 * y, -1, 1) * 32767).astype(np.int16).tobytes())
        with open(os.path.join(args.out, "gt", file_id + ".csv"), "w") as gt:
            gt.write("onset,offset,midi\n")
            gt.writelines(f"{on:.4f},{off:.4f},{int(note)}\n" for on, off, note in notes)
        items.append(dict(item, id=file_id, audio=f"audio/{file_id}.wav", gt=f"gt/{file_id}.csv",
                          condition=args.mode, preset=args.preset or item["preset"]))
    write_manifest(args.out, items, f"synthetic {args.mode}")


if __name__ == "__main__":
    main()
