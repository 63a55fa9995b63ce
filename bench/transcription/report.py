"""The side-by-side markdown report of pooled scores (overall and per instrument)."""


def _pct(x):
    return "-" if x is None else f"{100.0 * x:.1f}"


def _ms(x):
    return "-" if x is None else f"{1000.0 * x:+.1f}"


def _cpu_ms(x):
    return "-" if x is None else f"{1000.0 * x:.2f}"


def _times(x):
    return "-" if x is None else f"{x:.0f}x"


OVERALL_ROWS = [
    ("files (failed)", lambda s: f"{s['files']} ({s['failed']})"),
    ("true notes / estimated notes", lambda s: f"{s['n_ref']} / {s['n_est']}"),
    ("precision, onset ±50 ms (%)", lambda s: _pct(s["precision_onset"])),
    ("recall, onset ±50 ms (%)", lambda s: _pct(s["recall_onset"])),
    ("**F1, onset ±50 ms (%)**", lambda s: _pct(s["f1_onset"])),
    ("F1, onset and offset (%)", lambda s: _pct(s["f1_offset"])),
    ("F1, onset ±150 ms (%)", lambda s: _pct(s["f1_loose"])),
    ("latency median (ms)", lambda s: _ms(s["latency_median"])),
    ("latency 90th percentile (ms)", lambda s: _ms(s["latency_p90"])),
    ("notes every converter matches", lambda s: str(s["shared_notes"])),
    ("latency median, notes every converter matches (ms)",
     lambda s: _ms(s["latency_shared_median"])),
    ("latency p90, notes every converter matches (ms)", lambda s: _ms(s["latency_shared_p90"])),
    ("latency median, ±150 ms matches (ms)", lambda s: _ms(s["latency_loose_median"])),
    ("latency p90, ±150 ms matches (ms)", lambda s: _ms(s["latency_loose_p90"])),
    ("octave errors (% of estimated notes)", lambda s: _pct(s["octave_error_rate"])),
    ("CPU per second of audio (ms)", lambda s: _cpu_ms(s["cpu_per_audio_second"])),
    ("speed (audio s per CPU s)", lambda s: _times(s["realtime_factor"])),
]

UNMATCHED_ROWS = [
    ("late", "the true pitch, up to 150 ms after its onset"),
    ("struck_again", "the true pitch, struck again later in the note"),
    ("semitone", "a semitone off"),
    ("octaves", "whole octaves off"),
    ("other_pitch", "another pitch"),
    ("no_true_note", "where no true note sounds"),
]

INSTRUMENT_TABLES = [
    ("F1, onset ±50 ms (%)", lambda s: _pct(s["f1_onset"])),
    ("F1, onset and offset (%)", lambda s: _pct(s["f1_offset"])),
    ("F1, onset ±150 ms (%)", lambda s: _pct(s["f1_loose"])),
    ("Latency median (ms)", lambda s: _ms(s["latency_median"])),
    ("Latency 90th percentile (ms)", lambda s: _ms(s["latency_p90"])),
    ("Octave errors (% of estimated notes)", lambda s: _pct(s["octave_error_rate"])),
    ("CPU per second of audio (ms)", lambda s: _cpu_ms(s["cpu_per_audio_second"])),
]

DEFINITIONS = """\
Scores pool the notes of all files (precision = matched / estimated notes, recall = matched /
true notes). A match pairs one estimated and one true note (mir_eval's maximum matching) whose
onsets differ by at most 50 ms and pitches by at most 50 cents; "onset and offset" also needs
the offsets within 20 % of the true note's length (at least 50 ms); "±150 ms" widens the onset
window. Latency is estimated minus true onset over the matched notes (positive = late); the
±50 ms window bounds it, so the ±150 ms rows show how late the late notes really are. A
converter that finds more of the hard notes (slow attacks, legato) adds later ones to its own
matches, so the rows over the notes every converter matches compare like with like. An octave
error is an estimated note that does not match but starts within 50 ms of a true note whose
pitch is a whole number of octaves away (±50 cents). CPU is user + system time of the
converter's process and its children; speed is audio time divided by that CPU time."""

UNMATCHED_DEFINITION = """\
Each estimated note that matches none is put against the true note sounding where it starts
(counted from 50 ms before that note's onset, the latest-starting one if two overlap there)."""


def _row(cells):
    return "| " + " | ".join(cells) + " |"


def _table(header, rows):
    lines = [_row(header), _row(["---"] + ["---:"] * (len(header) - 1))]
    lines += [_row(r) for r in rows]
    return lines


def markdown(results, meta):
    """`results` maps each converter label to its entry from the run (see accuracy.py)."""
    labels = list(results)
    lines = [f"# Transcription benchmark: {meta['split']} split", "",
             f"{meta['files']} files, {meta['audio_seconds'] / 60.0:.1f} min of audio, "
             f"{meta['n_ref']} notes; run {meta['date']} with -j {meta['jobs']}.", ""]
    for label in labels:
        lines.append(f"- `{label}`: `{results[label]['command']}`")
    lines += ["", "## Overall", ""]
    lines += _table(["metric"] + labels,
                    [[name] + [fmt(results[l]["overall"]) for l in labels]
                     for name, fmt in OVERALL_ROWS])
    lines += ["", DEFINITIONS, "", "## Estimated notes that match none", ""]
    lines += _table(["kind"] + labels,
                    [[name] + [str(results[l]["overall"]["unmatched"][key]) for l in labels]
                     for key, name in UNMATCHED_ROWS])
    lines += ["", UNMATCHED_DEFINITION, "", "## Per instrument"]
    instruments = list(results[labels[0]]["per_instrument"])
    for title, fmt in INSTRUMENT_TABLES:
        lines += ["", f"### {title}", ""]
        lines += _table(["instrument"] + labels,
                        [[inst] + [fmt(results[l]["per_instrument"][inst]) for l in labels]
                         for inst in instruments])
    failures = [(l, fid, f["error"]) for l in labels
                for fid, f in results[l]["files"].items() if f["error"]]
    if failures:
        lines += ["", "## Failed runs (scored as no notes)", ""]
        for label, fid, error in failures:
            first = " ".join(error.split())[:200]
            lines.append(f"- `{label}` on `{fid}`: {first}")
    return "\n".join(lines) + "\n"
