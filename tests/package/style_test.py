# Looks at the style of every source: the formatter changes nothing, and the linter finds nothing. Arguments: a build folder
# with compile_commands.json, and the folder of the project.

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

build, project = sys.argv[1:3]
tracked = subprocess.run(["git", "ls-files"], cwd=project, check=True, capture_output=True, text=True).stdout.split()
sources = [name for name in tracked if re.search(r"\.(c|cpp|h|hpp)$", name) and not name.endswith("_tables.cpp")]
# Each table of a character set is made by one template from a generated array.
linted = [name for name in sources if re.match(r"(source|tool|examples)/.*\.c(pp)?$", name)]
linted = [name for name in linted if not re.search(r"qv_charset_(iso|msft|koi)_", name)]


def run(*command):
    done = subprocess.run(command, cwd=project, capture_output=True, text=True)
    return (done.stdout + "\n".join(line for line in done.stderr.split("\n") if "error:" in line)).strip()


def chunks(names, size):
    return [names[i : i + size] for i in range(0, len(names), size)]


with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    jobs = [pool.submit(run, "clang-format-19", "--dry-run", "--Werror", *part) for part in chunks(sources, 20)]
    jobs += [pool.submit(run, "clang-tidy-19", "--quiet", "-p", build, *part) for part in chunks(linted, 6)]
    found = sorted({job.result() for job in jobs} - {""})

text = "\n".join(found).replace(str(pathlib.Path(project).resolve()) + "/", "")
print(f"{len(sources)} sources formatted, {len(linted)} linted")
print(text)
sys.exit(1 if text or len(linted) < 50 else 0)
