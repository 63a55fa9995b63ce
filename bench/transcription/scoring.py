"""Scoring estimated notes against ground truth with the benchmark's conventions.

Matching is mir_eval's maximum bipartite matching (each true note matches at most one estimate).
Per file the counts are kept, not the ratios, so that totals over a set are pooled over notes:
a file with 90 notes weighs more than one with 20."""

import warnings

import numpy as np
from mir_eval import transcription

ONSET_TOLERANCE = 0.05
LOOSE_ONSET_TOLERANCE = 0.15
PITCH_TOLERANCE_CENTS = 50.0
OFFSET_RATIO = 0.2
OFFSET_MIN_TOLERANCE = 0.05
# Shortest note mir_eval accepts from a converter that reports an instant note; far below any
# offset tolerance, so such a note can match on onset but never with offsets.
MIN_DURATION = 1e-3


def _as_arrays(notes):
    """mir_eval wants positive durations, non-negative times and pitches in Hz."""
    if not notes:
        return np.zeros((0, 2)), np.zeros(0)
    a = np.asarray(notes, dtype=float)
    onsets = np.maximum(a[:, 0], 0.0)
    offsets = np.maximum(a[:, 1], onsets + MIN_DURATION)
    hz = 440.0 * 2.0 ** ((a[:, 2] - 69.0) / 12.0)
    return np.column_stack([onsets, offsets]), hz


def _match(ref, est, onset_tolerance, offset_ratio):
    with warnings.catch_warnings():
        # mir_eval warns about empty note lists, which are ordinary here (a failed run).
        warnings.simplefilter("ignore")
        return transcription.match_notes(
            ref[0], ref[1], est[0], est[1], onset_tolerance=onset_tolerance,
            pitch_tolerance=PITCH_TOLERANCE_CENTS, offset_ratio=offset_ratio,
            offset_min_tolerance=OFFSET_MIN_TOLERANCE)


def _latencies(ref, est, matching):
    return [float(est[0][e, 0] - ref[0][r, 0]) for r, e in matching]


def _octaves_off(midi, ref_midi):
    """Whether `midi` lies a whole, non-zero number of octaves from `ref_midi`, within the
    pitch tolerance."""
    octaves = (midi - ref_midi) / 12.0
    nearest = round(octaves)
    return nearest != 0 and abs(octaves - nearest) * 1200.0 <= PITCH_TOLERANCE_CENTS


def count_octave_errors(ref_notes, est_notes, matched_est):
    """An octave error is an estimated note that is not matched (onset +-50 ms, pitch +-50
    cents) but whose onset is within +-50 ms of a true note whose pitch differs from it by a
    whole, non-zero number of octaves, +-50 cents."""
    errors = 0
    for i, (onset, _, midi) in enumerate(est_notes):
        if i in matched_est:
            continue
        for ref_onset, _, ref_midi in ref_notes:
            if abs(ref_onset - onset) > ONSET_TOLERANCE + 1e-9:
                continue
            if _octaves_off(midi, ref_midi):
                errors += 1
                break
    return errors


# What an estimated note that matches no true note is, judged against the true note sounding
# where it starts (from 50 ms before that note's onset): a note found late, a wrong pitch in a
# known relation to the true one, the true note struck again, or a note where none sounds.
MISS_KINDS = ("late", "struck_again", "semitone", "octaves", "other_pitch", "no_true_note")


def classify_unmatched(ref_notes, est_notes, matched_est):
    """Counts of the unmatched estimated notes by kind (MISS_KINDS). A note at the right pitch
    within 150 ms of the true onset is late; later in the true note, it strikes it again."""
    counts = dict.fromkeys(MISS_KINDS, 0)
    for i, (onset, _, midi) in enumerate(est_notes):
        if i in matched_est:
            continue
        sounding = [r for r in ref_notes if r[0] - ONSET_TOLERANCE <= onset < r[1]]
        if not sounding:
            counts["no_true_note"] += 1
            continue
        ref_onset, _, ref_midi = max(sounding, key=lambda r: r[0])
        if abs(midi - ref_midi) * 100.0 <= PITCH_TOLERANCE_CENTS:
            late = onset - ref_onset <= LOOSE_ONSET_TOLERANCE + 1e-9
            counts["late" if late else "struck_again"] += 1
        elif abs(abs(midi - ref_midi) - 1.0) * 100.0 <= PITCH_TOLERANCE_CENTS:
            counts["semitone"] += 1
        elif _octaves_off(midi, ref_midi):
            counts["octaves"] += 1
        else:
            counts["other_pitch"] += 1
    return counts


def score_file(ref_notes, est_notes):
    """Counts and latencies for one file; combine files with `pool`."""
    ref, est = _as_arrays(ref_notes), _as_arrays(est_notes)
    onset = _match(ref, est, ONSET_TOLERANCE, None)
    with_offset = _match(ref, est, ONSET_TOLERANCE, OFFSET_RATIO)
    loose = _match(ref, est, LOOSE_ONSET_TOLERANCE, None)
    # By true note, so that converters can be compared on the notes they all find.
    onset_matches = sorted([int(r), x] for (r, _), x in zip(onset, _latencies(ref, est, onset)))
    matched_est = {e for _, e in onset}
    return {
        "n_ref": len(ref_notes),
        "n_est": len(est_notes),
        "matched": len(onset),
        "matched_offset": len(with_offset),
        "matched_loose": len(loose),
        "latencies": [x for _, x in onset_matches],
        "onset_matches": onset_matches,
        "latencies_loose": _latencies(ref, est, loose),
        "octave_errors": count_octave_errors(ref_notes, est_notes, matched_est),
        "unmatched": classify_unmatched(ref_notes, est_notes, matched_est),
    }


def _prf(matched, n_ref, n_est):
    precision = matched / n_est if n_est else 0.0
    recall = matched / n_ref if n_ref else 0.0
    f1 = 2 * precision * recall / (precision + recall) if precision + recall else 0.0
    return precision, recall, f1


def _percentile(values, q):
    return float(np.percentile(values, q)) if values else None


def pool(file_scores):
    """Totals over files: precision, recall and F1 from pooled note counts, latency
    percentiles over all matched notes, CPU and wall time summed against audio time."""
    total = {k: sum(s[k] for s in file_scores) for k in
             ("n_ref", "n_est", "matched", "matched_offset", "matched_loose", "octave_errors")}
    lat = [x for s in file_scores for x in s["latencies"]]
    lat_loose = [x for s in file_scores for x in s["latencies_loose"]]
    audio = sum(s.get("duration", 0.0) for s in file_scores)
    cpu = sum(s.get("cpu", 0.0) for s in file_scores)
    wall = sum(s.get("wall", 0.0) for s in file_scores)
    out = {"files": len(file_scores), "failed": sum(1 for s in file_scores if s.get("error"))}
    out.update(total)
    out["unmatched"] = {k: sum(s["unmatched"][k] for s in file_scores) for k in MISS_KINDS}
    for name, matched in (("onset", "matched"), ("offset", "matched_offset"),
                          ("loose", "matched_loose")):
        p, r, f = _prf(total[matched], total["n_ref"], total["n_est"])
        out.update({f"precision_{name}": p, f"recall_{name}": r,
                    f"f1_{name}": f})
    out.update({
        "latency_median": _percentile(lat, 50), "latency_p90": _percentile(lat, 90),
        "latency_loose_median": _percentile(lat_loose, 50),
        "latency_loose_p90": _percentile(lat_loose, 90),
        "octave_error_rate": total["octave_errors"] / total["n_est"] if total["n_est"] else 0.0,
        "audio_seconds": audio, "cpu_seconds": cpu, "wall_seconds": wall,
        "cpu_per_audio_second": cpu / audio if audio else None,
        "realtime_factor": audio / cpu if cpu > 0 else None,
    })
    return out


def add_shared_latency(results):
    """Each converter's latency over the true notes that every converter in the run matches
    within ±50 ms: over its own matches, a converter that also finds the notes that are hard
    to find early looks slower than one that finds only the easy ones."""
    labels = list(results)
    for label in labels:
        lat = []
        for file_id, own in results[label]["files"].items():
            matched = ({r for r, _ in results[other]["files"][file_id]["onset_matches"]}
                       for other in labels)
            shared = set.intersection(*matched)
            lat += [x for r, x in own["onset_matches"] if r in shared]
        results[label]["overall"].update(shared_notes=len(lat),
                                         latency_shared_median=_percentile(lat, 50),
                                         latency_shared_p90=_percentile(lat, 90))
