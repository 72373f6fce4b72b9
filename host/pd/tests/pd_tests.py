#!/usr/bin/env python3
"""tarvoverb~ in the real Pd, in batch mode: each group writes its patches, runs
`pd -nogui -nosound -batch -stderr`, and reads what Pd printed and recorded.

The recordings are compared sample for sample with what tarvoverb-render writes for the
same settings, rate and block size: both run the same engine on the same 32-bit samples,
so any difference is a fault of the Pd skin (a block misread, a rate not followed, a
buffer overwritten in place, a parameter not passed).

usage: pd_tests.py GROUP --pd PD --external DIR --counting DIR --render TOOL --help-patch FILE --work DIR
"""
import argparse
import os
import shutil
import struct
import subprocess
import sys

SKIP = 77


def run_pd(args, patch, sends=(), path=None, timeout=120):
    """Pd's console (stderr) for one patch; the patch or the sends quit Pd."""
    command = [args.pd, "-nogui", "-nosound", "-batch", "-stderr", "-noprefs", "-path", path or args.external,
               "-open", patch]
    for message in sends:
        command += ["-send", message]
    done = subprocess.run(command, capture_output=True, text=True, timeout=timeout)
    return done.stderr


def read_float_wav(path):
    """Channels of a 32-bit float WAV (format 3, or an extensible header naming it)."""
    with open(path, "rb") as f:
        data = f.read()
    assert data[:4] == b"RIFF" and data[8:12] == b"WAVE", path
    pos, channels, samples = 12, 0, None
    while pos + 8 <= len(data):
        tag, size = data[pos:pos + 4], struct.unpack("<I", data[pos + 4:pos + 8])[0]
        body = data[pos + 8:pos + 8 + size]
        if tag == b"fmt ":
            fmt, channels, _, _, _, bits = struct.unpack("<HHIIHH", body[:16])
            if fmt == 0xFFFE:
                fmt = struct.unpack("<H", body[24:26])[0]
            assert fmt == 3 and bits == 32, f"{path}: not 32-bit float (format {fmt}, {bits} bits)"
        elif tag == b"data":
            frames = len(body) // (4 * channels)
            values = struct.unpack(f"<{frames * channels}f", body[:frames * channels * 4])
            samples = [values[c::channels] for c in range(channels)]
        pos += 8 + size + (size & 1)
    assert samples is not None, f"{path}: no data"
    return samples


def render_patch(case, wav):
    """The object inside a subpatch (with its [block~] if any): DSP on, 6 s of silence so
    that every parameter ramp has landed, then in one logical instant "clear", the recorder
    started and a one-sample impulse into the chosen inlets; then stop and quit."""
    sources, speakers = case["counts"][0], case["counts"][1]
    lines = ["#N canvas 0 50 600 400 12;", "#N canvas 0 50 600 400 test 0;"]
    objects = []

    def add(text):
        objects.append(text)
        return len(objects) - 1

    connects = []
    load = add("obj 10 10 loadbang")
    fan = add("obj 10 40 t b b b")
    table = add("obj 300 10 table imp 1")
    fill = add("msg 300 40 \\; imp 0 1 \\; pd dsp 1")
    settle = add("obj 10 70 delay 6000")
    go = add("obj 10 100 t b b b b")
    clear = add("msg 10 130 clear")
    play = add("obj 200 160 tabplay~ imp")
    verb = add("obj 10 200 tarvoverb~ " + case["args"])
    # Recorded into arrays and written by [soundfiler], which writes before it returns:
    # writesf~ writes from a thread of its own, which a batch run may quit before.
    frames = int(case["record_ms"] * 0.001 * case.get("rate", 44100)) + 1
    names = [f"rec{outlet}" for outlet in range(speakers)]
    recorders = []
    for outlet, name in enumerate(names):
        add(f"obj {300 + 60 * outlet} 230 table {name} {frames}")
        recorders.append(add(f"obj {10 + 60 * outlet} 260 tabwrite~ {name}"))
    stop = add(f"obj 10 300 delay {case['record_ms']}")
    write = add(f"msg 10 330 write -bytes 4 {wav} {' '.join(names)}")
    writer = add("obj 10 360 soundfiler")
    quit_delay = add("obj 100 300 delay 200")
    quit_msg = add("msg 100 330 \\; pd quit")
    connects += [(load, 0, fan, 0), (fan, 2, fill, 0), (fan, 0, settle, 0),
                 (settle, 0, go, 0), (go, 3, clear, 0),
                 (go, 1, play, 0), (go, 0, stop, 0), (clear, 0, verb, 0),
                 (stop, 0, quit_delay, 0), (stop, 0, write, 0), (write, 0, writer, 0),
                 (quit_delay, 0, quit_msg, 0)]
    for inlet in range(sources):
        if case.get("impulse_source", 0) in (0, inlet + 1):
            connects.append((play, 0, verb, inlet))
    for outlet in range(speakers):
        connects += [(verb, outlet, recorders[outlet], 0), (go, 2, recorders[outlet], 0)]
    for i, message in enumerate(case.get("messages", [])):
        m = add(f"msg 300 {100 + 20 * i} {message}")
        connects.append((fan, 2, m, 0))
        connects.append((m, 0, verb, 0))
    for i, message in enumerate(case.get("during", [])):
        # Sent as the recording starts: the audio routine then runs the changes' ramps.
        m = add(f"msg 450 {100 + 20 * i} {message}")
        connects += [(go, 0, m, 0), (m, 0, verb, 0)]
    if case.get("after_stop"):
        # Sent when the recording stops: to read what the audio routine did.
        m = add(f"msg 200 330 {case['after_stop']}")
        connects += [(stop, 0, m, 0), (m, 0, verb, 0)]
    if case.get("block"):
        add("obj 400 10 block~ " + case["block"])
    lines += [f"#X {o};" for o in objects]
    lines += [f"#X connect {a} {b} {c} {d};" for a, b, c, d in connects]
    lines += ["#X restore 10 10 pd test;"]
    return "\n".join(lines) + "\n"


# Each case: creation arguments, messages sent at load, the [block~] of the subpatch, and the
# render tool's options for the same room. The settings differ from the defaults so that a
# parameter the skin failed to pass shows.
RENDER_CASES = [
    {"name": "default rate and block, messages at load", "counts": (2, 2, 8), "args": "2 2 8 @tr0 1.2 @gain -4",
     "messages": ["source 1 ade 30 2 0", "speakers ade -30 1 0 30 1 0", "early start 30", "trh 0.3"],
     "render": ["--numsources", "2", "--numspeakers", "2", "--numinternals", "8", "--tr0", "1.2", "--gain", "-4",
                "--trh", "0.3", "--early_start", "30", "--source", "1 ade 30 2 0",
                "--speakers", "ade -30 1 0 30 1 0"],
     "rate": 44100, "blocksize": 64},
    # Beyond 8 internal channels the early gains carry a random spread drawn anew at each
    # computation, so they depend on the history of the process: 8 keeps the comparison exact.
    {"name": "[block~ 128], impulse on source 2", "counts": (3, 4, 8), "args": "@numsources 3 @numspeakers 4 @numinternals 8",
     "messages": ["source 2 ade -60 3 10"], "impulse_source": 2, "block": "128",
     "render": ["--numsources", "3", "--numspeakers", "4", "--numinternals", "8", "--source", "2 ade -60 3 10",
                "--impulse-source", "2"],
     "rate": 44100, "blocksize": 128},
    {"name": "[block~ 64 1 2] oversampled", "counts": (1, 2, 8), "args": "1 2 8 @tr0 0.8", "block": "64 1 2",
     "render": ["--numsources", "1", "--numspeakers", "2", "--numinternals", "8", "--tr0", "0.8"],
     "rate": 88200, "blocksize": 64},
]


def group_render(args):
    failures = []
    for index, case in enumerate(RENDER_CASES):
        case = dict(case, record_ms=300)
        seconds = 0.25
        pd_wav = os.path.join(args.work, f"pd{index}.wav")
        tool_wav = os.path.join(args.work, f"tool{index}.wav")
        patch = os.path.join(args.work, f"render{index}.pd")
        with open(patch, "w") as f:
            f.write(render_patch(case, pd_wav))
        console = run_pd(args, patch)
        command = [args.render, "--out", tool_wav, "--samplerate", str(case["rate"]), "--blocksize",
                   str(case["blocksize"]), "--duration", str(seconds)] + case["render"]
        tool = subprocess.run(command, capture_output=True, text=True)
        if tool.returncode != 0:
            failures.append(f"{case['name']}: render tool failed: {' '.join(command)}\n{tool.stderr}")
            continue
        if not os.path.exists(pd_wav):
            failures.append(f"{case['name']}: Pd recorded nothing; console:\n{console}")
            continue
        got, want = read_float_wav(pd_wav), read_float_wav(tool_wav)
        frames = len(want[0])
        problems = []
        if len(got) != len(want):
            problems.append(f"{len(got)} channels, expected {len(want)}")
        elif len(got[0]) < frames:
            problems.append(f"{len(got[0])} frames recorded, {frames} needed")
        else:
            for c in range(len(want)):
                diff = [i for i in range(frames) if got[c][i] != want[c][i]]
                if diff:
                    i = diff[0]
                    problems.append(f"speaker {c + 1}: {len(diff)} samples differ, first at {i}: "
                                    f"{got[c][i]!r} != {want[c][i]!r}")
            if max(abs(v) for ch in want for v in ch) == 0.0:
                problems.append("the reference is silent: the comparison proves nothing")
        if "error" in console:
            problems.append("console:\n" + console)
        if problems:
            failures.append(f"{case['name']}: " + "; ".join(problems))
        else:
            print(f"ok: {case['name']}: {len(want)} x {frames} samples equal")
    return failures


def command_patch(args_text):
    """[r cmd] -> [tarvoverb~ ...] -> dump outlet -> [print dump]; [r mark] -> [print mark]."""
    return ("#N canvas 0 50 400 300 12;\n#X obj 10 10 r cmd;\n"
            f"#X obj 10 40 tarvoverb~ {args_text};\n"
            "#X obj 10 70 print dump;\n#X obj 200 10 r mark;\n#X obj 200 40 print mark;\n"
            "#X connect 0 0 1 0;\n#X connect 3 0 4 0;\n")


def session(args, name, creation, cases, dump_outlet):
    """Sends each case's messages to one object, a mark between cases, and returns the
    console lines that each case produced."""
    patch = os.path.join(args.work, name + ".pd")
    with open(patch, "w") as f:
        text = command_patch(creation)
        f.write(text + f"#X connect 1 {dump_outlet} 2 0;\n")
    sends = []
    for i, (messages, _) in enumerate(cases):
        sends += [f"mark {i}"] + [f"cmd {m}" for m in messages]
    sends += [f"mark {len(cases)}", "pd quit"]
    console = run_pd(args, patch, sends)
    segments, current = {}, None
    for line in console.splitlines():
        if line.startswith("mark: "):
            current = int(line.split()[1])
            segments[current] = []
        elif current is not None:
            segments[current].append(line)
    return console, segments


def check_session(name, cases, console, segments):
    failures = []
    for i, (messages, expected) in enumerate(cases):
        lines = segments.get(i)
        if lines is None:
            failures.append(f"{name}: the session stopped before {messages}; console:\n{console}")
            break
        for text in expected:
            if not any(line.rstrip() == text.rstrip() for line in lines):
                failures.append(f"{name}: after {messages}: no line {text!r}; got {lines}")
        if not expected and lines:
            failures.append(f"{name}: after {messages}: expected silence, got {lines}")
    return failures


# Messages and what the console shows after them: errors as the Max object words them,
# values read back through the dump outlet (Pd prints floats with 6 significant digits).
MESSAGE_CASES = [
    (["tr0 2.5", "dump tr0"], ["dump: tr0 2.5"]),
    (["tr0 500", "dump tr0"], ["dump: tr0 100"]),  # clipped by the attribute's range
    (["reset tr0", "dump tr0"], ["dump: tr0 1.995"]),
    (["dump"], ["dump: numinternals 8", "dump: air 0", "dump: mute 0"]),  # every attribute, one message each
    (["tr0 3", "reset", "dump tr0", "dump numsources"], ["dump: tr0 1.995", "dump: numsources 2"]),  # counts spared
    (["/reverb/tr0 3", "dump tr0"], ["dump: tr0 3"]),  # the attribute reads back the engine's value
    (["reverb start 50", "dump reverb_start"], ["dump: reverb_start 50"]),
    (["reverb foo 1"], ["error: tarvoverb~: unknwon message : reverb foo 1"]),
    (["early start 30", "dump early_start"], ["dump: early_start 30"]),
    (["early 1 2 3"], ["error: tarvoverb~: invalid early parameters 1 2 3"]),
    (["direct 0 0 0"], ["error: tarvoverb~: invalid direct parameters 0 0 0"]),
    (["direct 0 0 0 0 foo bar", "dump direct"], ["dump: direct 0 0 0 0 250 4000"]),
    # 2 m at 30 degrees to the right: x = 2 sin 30, y = 2 cos 30.
    # (source 2 stays where the engine puts it: 30 degrees right at 1 m)
    (["source 1 ade 30 2 0", "dump sourcespositions"], ["dump: sourcespositions 1 1.73205 0 0.5 0.866025 0"]),
    (["source 3 ade 0 1 0"], ["error: tarvoverb~: invalid source index 3"]),
    # 1 m at -30 and 30 degrees; then speaker 2 moved to 45 degrees at 1 m.
    (["speakers ade -30 1 0 30 1 0", "dump speakerspositions"],
     ["dump: speakerspositions -0.5 0.866025 0 0.5 0.866025 0"]),
    (["speaker 2 ade 45 1 0", "dump speakerspositions"],
     ["dump: speakerspositions -0.5 0.866025 0 0.707107 0.707107 0"]),
    (["numsources 3"], ["error: tarvoverb~: could not dynamically change number of sources"]),
    (["dump foo"], ["error: tarvoverb~: no attribute foo"]),
    (["dump 1 2"], ["error: tarvoverb~: invalid message : dump 1 2"]),
    (["foo 1"], ["error: tarvoverb~: unknown message : foo 1"]),
    (["/nowhere 1"], ["error: tarvoverb~: unknown OSC message : /nowhere 1"]),
    (["version"], ["tarvoverb~: Version 4.9.2 (Build Feb 14 2017) (32 bits float)"]),
    (["postdspstatus"], ["tarvoverb~: dsp processing is enabled", "tarvoverb~: dsp is off"]),
    (["mute 1", "postdspstatus", "mute 0"], ["tarvoverb~: dsp processing is muted"]),
    (["bypass 7", "dump bypass", "bypass 0"], ["dump: bypass 1"]),
    (["postattributes"], ["tarvoverb~: found 33 attributes", "tarvoverb~: numinternals 8 "]),
    (["tr0 2.5", "preset export PRESET.txt", "tr0 7", "preset load PRESET.txt", "dump tr0"], ["dump: tr0 2.5"]),
    (["preset load missing.txt"], ["error: tarvoverb~: Could not find file \"MISSING\""]),
    (["preset store x.txt"], ["error: tarvoverb~: invalid message : preset store x.txt"]),
    (["preset export x.json"], ["error: tarvoverb~: unexpected file extension for file \"JSON\""]),
]


def group_messages(args):
    preset = os.path.join(args.work, "state.txt")
    missing = os.path.join(args.work, "missing.txt")
    cases = []
    for messages, expected in MESSAGE_CASES:
        messages = [m.replace("PRESET.txt", preset) for m in messages]
        expected = [e.replace("MISSING", missing).replace("JSON", os.path.join(args.work, "x.json")) for e in expected]
        messages = [m.replace("missing.txt", missing).replace("x.json", os.path.join(args.work, "x.json"))
                    for m in messages]
        cases.append((messages, expected))
    if os.path.exists(preset):
        os.remove(preset)
    console, segments = session(args, "messages", "2 2 8", cases, 2)
    failures = check_session("messages", cases, console, segments)
    if not os.path.exists(preset) or "/tr0" not in open(preset).read():
        failures.append(f"preset export wrote no state with the decay time to {preset}")
    return failures


# Creation arguments: the counts read back through the dump outlet, which is the rightmost
# (so its index also proves the number of signal outlets).
CREATION_CASES = [
    ("", 6, ["dump: numsources 6", "dump: numspeakers 6", "dump: numinternals 8"]),
    ("4 8 16", 8, ["dump: numsources 4", "dump: numspeakers 8", "dump: numinternals 16"]),
    ("@numspeakers 8 @tr0 3 @numinternals 16 @numsources 4", 8,
     ["dump: numsources 4", "dump: numspeakers 8", "dump: numinternals 16", "dump: tr0 3"]),
    ("@numsources 65 @numinternals 1 @tr0 1000 @gain -40", 6,
     ["dump: numsources 64", "dump: numinternals 2", "dump: tr0 100", "dump: gain -30"]),
    ("1 2 @direct 0 -3 0 0 200 5000 @sourcespositions 1 2 3", 2,
     ["dump: numsources 1", "dump: numinternals 8", "dump: direct 0 -3 0 0 200 5000",
      "dump: sourcespositions 1 2 3"]),
]


def group_creation(args):
    failures = []
    names = ["numsources", "numspeakers", "numinternals", "tr0", "gain", "direct", "sourcespositions"]
    for i, (creation, outlet, expected) in enumerate(CREATION_CASES):
        cases = [([f"dump {n}" for n in names], expected)]
        console, segments = session(args, f"creation{i}", creation, cases, outlet)
        failures += check_session(f"[tarvoverb~ {creation}]", cases, console, segments)
        if "error" in console:
            failures.append(f"[tarvoverb~ {creation}]: console:\n{console}")
    # A refused configuration: the Max object's texts, and no object.
    console, _ = session(args, "refused", "@numsources foo", [([], [])], 0)
    for text in ["error: tarvoverb~: Configuration not supported", "error: tarvoverb~: couldnt create object",
                 "tarvoverb~ @numsources foo"]:
        if text not in console:
            failures.append(f"refused configuration: no {text!r} in:\n{console}")
    if "couldn't create" not in console:
        failures.append(f"refused configuration: Pd made an object anyway:\n{console}")
    return failures


def group_help(args):
    console = run_pd(args, args.help_patch, ["pd quit"])
    if "error" in console.lower() or "couldn't create" in console:
        return [f"the help patch printed errors:\n{console}"]
    print("ok: help patch opens quietly")
    return []


def group_allocations(args):
    """The counting build of the external renders while messages change every kind of
    parameter as the recording starts; its audio routine must not have allocated once."""
    wav = os.path.join(args.work, "counting.wav")
    case = {"counts": (2, 2, 8), "args": "2 2 8", "record_ms": 300,
            "after_stop": "allocations",
            "during": ["tr0 3", "source 1 ade 30 2 0", "speakers ade -30 1 0 30 1 0", "direct -3 0 0 0 177 5657",
                         "early start 30", "/reverb/tr0 2", "bypass 1", "bypass 0"]}
    patch = os.path.join(args.work, "counting.pd")
    with open(patch, "w") as f:
        f.write(render_patch(case, wav))
    console = run_pd(args, patch, path=args.counting)
    reports = [l for l in console.splitlines() if "perform allocated" in l]
    if len(reports) != 1:
        return [f"no allocation report from the counting build:\n{console}"]
    failures = []
    for report in reports:
        words = report.split()
        count, blocks = int(words[3]), int(words[6])
        if count != 0 or blocks < 1000:
            failures.append(f"audio routine: {report}")
        else:
            print(f"ok: {report}")
    return failures


GROUPS = {"render": group_render, "messages": group_messages, "creation": group_creation, "help": group_help,
          "allocations": group_allocations}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("group", choices=sorted(GROUPS))
    for option in ["--pd", "--external", "--counting", "--render", "--help-patch", "--work"]:
        parser.add_argument(option, required=True)
    args = parser.parse_args()
    if not shutil.which(args.pd):
        print(f"SKIPPED: no Pd at {args.pd} (Debian: apt-get install puredata-core; scripts/test.sh installs it)")
        return SKIP
    os.makedirs(args.work, exist_ok=True)
    failures = GROUPS[args.group](args)
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
