#!/usr/bin/env python3
"""Times whole programs beside their peers, in turns within one run: medians and ratios.

usage: whole_programs.py BUILD_FOLDER [--rounds N] [--only-stretched]
"""
import argparse
import math
import os
import resource
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time

SECONDS = 240
RATE = 48000
DATA_BYTES = SECONDS * RATE * 2 * 4  # of the float WAV that everybody writes


def run(command):
    """Seconds from start to end."""
    start = time.perf_counter()
    result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    taken = time.perf_counter() - start
    if result.returncode != 0:
        sys.exit(f"{command}: status {result.returncode}\n{result.stderr.decode(errors='replace')}")
    return taken


def cpu_seconds(command):
    """Seconds of CPU, its own and the system's."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    run(command)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime


def delta(ticks):
    out = [ticks & 0x7F]
    while ticks > 0x7F:
        ticks >>= 7
        out.append(0x80 | ticks & 0x7F)
    return bytes(reversed(out))


def write_midi(path):
    """Four minutes at 120 quarter notes a minute."""
    track = b"\x00\xff\x51\x03\x07\xa1\x20" + delta(SECONDS * 960) + b"\xff\x2f\x00"
    with open(path, "wb") as file:
        file.write(b"MThd" + struct.pack(">IHHH", 6, 0, 1, 480) + b"MTrk" + struct.pack(">I", len(track)) + track)


def write_songs(folder):
    """The same music in three formats: two tones that beat over noise that differs in both channels."""
    noise, tones = f"{folder}/noise.wav", f"{folder}/tones.wav"
    make = ["sox", "-R", "-n", "-r", str(RATE), "-c", "2", "-b", "24"]
    run(make + [noise, "synth", str(SECONDS), "pinknoise", "pinknoise", "vol", "0.12"])
    run(make + [tones, "synth", str(SECONDS), "pluck", "110", "saw", "165", "tremolo", "2", "80", "vol", "0.3"])
    run(["sox", "-m", noise, tones, "-b", "16", f"{folder}/song.wav"])
    run(["sox", f"{folder}/song.wav", "-C", "5", f"{folder}/song.ogg"])
    run(["sox", f"{folder}/song.wav", f"{folder}/song.flac"])
    os.remove(noise)
    os.remove(tones)


def write_show(path, songs, audio):
    os.makedirs(f"{path}/songs")
    os.makedirs(f"{path}/data")
    for number in range(1, songs + 1):
        write_midi(f"{path}/songs/{number} Song.mid")
        shutil.copyfile(audio, f"{path}/data/{number} Song.obd")
    return path


def last_bytes(path):
    with open(path, "rb") as file:
        file.seek(-DATA_BYTES, os.SEEK_END)
        return file.read()


def compare(title, commands, rounds, before=lambda: None):
    """Runs the commands in turns; the first is ours."""
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, command in commands.items():
            before()
            times[name].append(run(command))
    print(f"\n{title}")
    ours = times[next(iter(commands))]
    for name, taken in times.items():
        ratio = statistics.median(a / b for a, b in zip(taken, ours))
        print(f"  {name:28} {statistics.median(taken) * 1000:8.1f} ms   {ratio:6.2f} times ours")
    return {name: statistics.median(taken) for name, taken in times.items()}


def render(orbel, folder, rounds):
    show = write_show(f"{folder}/one", 1, f"{folder}/song.ogg")
    out = {name: f"{folder}/{name}.wav" for name in ("orbel", "ffmpeg", "sox", "sndfile")}
    song = f"{folder}/song.ogg"

    def clean():
        for path in out.values():
            if os.path.exists(path):
                os.remove(path)

    commands = {
        "orbel render": [orbel, "render", show, "-o", out["orbel"]],
        "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", song, "-c:a", "pcm_f32le", out["ffmpeg"]],
        "sox": ["sox", song, "-e", "floating-point", "-b", "32", out["sox"]],
        "sndfile-convert": ["sndfile-convert", "-float32", song, out["sndfile"]],
    }
    compare("Ogg Vorbis to a WAV of floats, four minutes", commands, rounds, clean)
    run(commands["orbel render"])
    run(commands["sndfile-convert"])
    same = last_bytes(out["orbel"]) == last_bytes(out["sndfile"])
    print(f"  samples have the decoder's bits: {'yes' if same else 'NO'}")
    clean()
    return same


def render_stretched(orbel, folder, rounds):
    """At 1.1 times the tempo and 2 semitones higher, beside the library's own program with the same engine."""
    song, out = f"{folder}/song.wav", f"{folder}/stretched.wav"
    show = write_show(f"{folder}/stretched", 1, song)
    with open(f"{show}/songs/1 Song.toml", "w") as file:
        file.write('format = 1\n\n[[tempo]]\nat = "1"\nscale = 1.1\n\n[[transpose]]\nat = "1"\nsemitones = 2\n')
    for quality, engine in (("faster", "-2"), ("finer", "-3")):
        ours = [orbel, "render", show, "--stretch", quality, "-o", out]
        theirs = ["rubberband", "-q", engine, "--no-threads", "--realtime", "-T", "1.1", "-p", "2", song, out]
        taken = []
        for _ in range(rounds):
            pair = []
            for command in (ours, theirs):
                if os.path.exists(out):
                    os.remove(out)
                pair.append(cpu_seconds(command))
            taken.append(pair)
        ratio = statistics.median(a / b for a, b in taken)
        print(f"\n{quality} engine, 1.1 times the tempo, 2 semitones higher: CPU of orbel render "
              f"{statistics.median(a for a, _ in taken):.2f} s, of rubberband {statistics.median(b for _, b in taken):.2f} s, "
              f"ratio {ratio:.2f}")
    os.remove(out)


def decode(build, folder, rounds):
    for kind in ("ogg", "flac", "wav"):
        song = f"{folder}/song.{kind}"
        compare(f"decoding four minutes of {kind} to floats, kept in memory or thrown away", {
            "decode_file": [f"{build}/benchmarks/decode_file", song],
            "ffmpeg": ["ffmpeg", "-v", "error", "-i", song, "-c:a", "pcm_f32le", "-f", "f32le", "-y", "/dev/null"],
            "sox": ["sox", song, "-t", "f32", "/dev/null"],
        }, rounds)


def opening(build, orbel, folder, rounds):
    script = f"{folder}/stop"
    with open(script, "w") as file:
        file.write("time 0.005 stop\n")
    demo = f"{folder}/demo"
    run([orbel, "demo", demo])
    sixty = write_show(f"{folder}/sixty", 60, f"{folder}/song.ogg")
    first = sorted(os.listdir(f"{demo}/data"), key=lambda name: (len(name.split(" ")[0]), name))[0]
    for name, show, song in (("the demo show", demo, f"{demo}/data/{first}"),
                             ("60 songs of four minutes", sixty, f"{folder}/song.ogg")):
        out = f"{folder}/first.wav"
        taken = compare(f"from starting the program to the first rendered read, {name}", {
            "orbel, one read": [orbel, "render", show, "--script", script, "-o", out],
            "decode_file, its first song": [f"{build}/benchmarks/decode_file", song],
        }, rounds)
        ours, alone = taken.values()
        print(f"  beyond decoding: {(ours - alone) * 1000:.1f} ms")


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=11)
    parser.add_argument("--only-stretched", action="store_true", help="nothing but rendering at another tempo and key")
    arguments = parser.parse_args()
    missing = [name for name in ("sox", "ffmpeg", "sndfile-convert", "rubberband") if shutil.which(name) is None]
    if missing:
        sys.exit(f"{', '.join(missing)} not found; benchmarks/install_peers.sh installs what is missing")
    orbel = os.path.abspath(f"{arguments.build}/host/orbel")
    print("load before: " + " ".join(f"{value:.1f}" for value in os.getloadavg()) +
          f", {math.floor(os.cpu_count())} cores")
    with tempfile.TemporaryDirectory(prefix="orbel_benchmark_") as folder:
        write_songs(folder)
        render_stretched(orbel, folder, min(arguments.rounds, 3))
        if arguments.only_stretched:
            return
        same = render(orbel, folder, arguments.rounds)
        decode(arguments.build, folder, arguments.rounds)
        opening(arguments.build, orbel, folder, arguments.rounds)
    print("load after: " + " ".join(f"{value:.1f}" for value in os.getloadavg()))
    sys.exit(0 if same else 1)


if __name__ == "__main__":
    main()
