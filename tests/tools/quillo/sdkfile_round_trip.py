#!/usr/bin/env python3
"""sdkfile_round_trip.py QUILLO [SIZE] [SECONDS]: a clip made by ffmpeg, without loss, goes through `quillo sdkfile write`
and back. The file is judged by its offsets alone and by ffmpeg's own decoding of the clip."""

import os
import struct
import subprocess
import sys
import tempfile


def run(*arguments, code=0):
    result = subprocess.run(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if result.returncode != code:
        sys.exit(f"{arguments}: exit code {result.returncode}, not {code}\n{result.stderr.decode()}")
    return result


def decoded(path, *options):
    return run("ffmpeg", "-v", "error", "-i", path, *options, "-").stdout


def same(what, got, wanted):
    if got != wanted:
        sys.exit(f"{what}: {str(got)[:80]}, not {str(wanted)[:80]}")


def main():
    quillo = sys.argv[1]
    size = sys.argv[2] if len(sys.argv) > 2 else "322x180"
    seconds = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    width, height = map(int, size.split("x"))
    frames, samples, frame_bytes = 25 * seconds, 48000 * seconds, width * height * 4

    with tempfile.TemporaryDirectory() as folder:
        clip, made = os.path.join(folder, "clip.mkv"), os.path.join(folder, "made.sdk")
        run("ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=s={size}:r=25", "-f", "lavfi", "-i",
            "aevalsrc=sin(440*2*PI*t)|0.5*sin(1000*2*PI*t)*t:s=48000", "-t", str(seconds), "-c:v", "ffv1", "-pix_fmt",
            "bgra", "-c:a", "pcm_f32le", clip)
        run(quillo, "sdkfile", "write", clip, made)

        with open(made, "rb") as file:
            data = file.read()
        audio = 602 + frames * (frame_bytes + 4)
        same("file size", len(data), audio + 2 * samples * 4)
        same("signature", data[:18], b"PREMIERE SDK_FILE ")
        same("version, audio, subtype, video, codec", struct.unpack_from("<iiIiI", data, 18),
             (5, 1, 0x5241575F, 1, 0x52415720))
        same("depth, size, frames", struct.unpack_from("<iiii", data, 42), (32, width, height, frames))
        same("samples, channel type", struct.unpack_from("<qi", data, 58), (samples, 2))
        same("frame duration, rate", struct.unpack_from("<qd", data, 70), (10160640000, 48000.0))
        same("rest of the header", data[98:602], bytes(504))

        pictures = decoded(clip, "-map", "0:v", "-f", "rawvideo", "-pix_fmt", "bgra")
        for frame in range(frames):
            start = 602 + frame * (frame_bytes + 4)
            stored = data[start:start + frame_bytes]
            upright = b"".join(stored[row * width * 4:(row + 1) * width * 4] for row in reversed(range(height)))
            same(f"frame {frame}", upright, pictures[frame * frame_bytes:(frame + 1) * frame_bytes])
            same(f"mark of frame {frame}", data[start + frame_bytes:start + frame_bytes + 4], b"++++")
        sound = decoded(clip, "-map", "0:a", "-f", "f32le")
        for channel in range(2):
            start = audio + channel * samples * 4
            wanted = b"".join(sound[i:i + 4] for i in range(channel * 4, samples * 8, 8))
            same(f"channel {channel}", data[start:start + samples * 4], wanted)

        png, wav = os.path.join(folder, "frame.png"), os.path.join(folder, "sound.wav")
        last = frames - 1
        run(quillo, "sdkfile", "read", made, "--frame", str(last), "--png", png, "--wav", wav)
        same("picture read back", decoded(png, "-f", "rawvideo", "-pix_fmt", "bgra"), pictures[last * frame_bytes:])
        same("sound read back", decoded(wav, "-f", "f32le"), sound)
        run(quillo, "sdkfile", "read", made)
        told = run(quillo, "sdkfile", "info", made).stdout.decode()
        for part in (f"{width} x {height}", f"{frames} frames", "25/1 a second", f"from byte {audio}"):
            if part not in told:
                sys.exit(f"'{part}' is not in: {told}")

        # What is no such file gets one line and its exit code.
        cut, wrong = os.path.join(folder, "cut.sdk"), os.path.join(folder, "wrong.sdk")
        for path, content in ((cut, data[:audio - 10]), (wrong, b"RIFF" + data[4:]), (cut, data[:100])):
            with open(path, "wb") as file:
                file.write(content)
            for command in ("info", "read"):
                complaint = run(quillo, "sdkfile", command, path, code=3).stderr.decode()
                same("lines of complaint", complaint.count("\n"), 1)
        run(quillo, "sdkfile", "read", made, "--frame", str(frames), code=3)
        run(quillo, "sdkfile", "info", os.path.join(folder, "none.sdk"), code=3)
        run(quillo, "sdkfile", "write", os.path.join(folder, "none.mov"), made, code=3)
    print(f"{frames} frames of {size} and {samples} samples of 2 channels: the same there and back")


main()
