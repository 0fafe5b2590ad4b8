"""The example in C++ and the one in C are the same program. Arguments: the two executables."""

import pathlib
import subprocess
import sys
import tempfile

with tempfile.TemporaryDirectory() as scratch:
    text = pathlib.Path(scratch, "text")
    text.write_bytes("b a b\u2003\xe4\n\na\tC c \xe4 b".encode())
    config = pathlib.Path(scratch, "config")
    config.write_text("encoding=latin1\ntop=1\n")
    runs = [["-n", "2", text], ["-n-1", text, text], ["-c", config], [f"--config={config}", text, "-n3"], ["-e", "latin1"]]
    runs += [["-e", "none"], [text, "-n", "many"], ["--wrong"]]
    done = [[subprocess.run([p, *run], input=text.read_bytes(), capture_output=True) for p in sys.argv[1:]] for run in runs]

problems = [f"{run}: {two}" for run, two in zip(runs, done) if two[0].returncode != two[1].returncode]
problems += [f"{run}: {two}" for run, two in zip(runs, done) if two[0].returncode == 0 and two[0].stdout != two[1].stdout]
if done[0][0].stdout != b"      3 b\n      2 a\n" or sum(two[0].returncode == 2 for two in done) != 3 or done[1][0].stderr:
    problems.append(f"wrong: {done[0][0]}")
print("\n".join(problems))
sys.exit(1 if problems else 0)
