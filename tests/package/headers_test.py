# Runs the documentation generator over the public headers: each name has a comment of its own or of its group, and each
# comment is well formed. Argument: the folder of the project.

import pathlib
import subprocess
import sys
import tempfile

project = sys.argv[1]

with tempfile.TemporaryDirectory() as scratch:
    settings = pathlib.Path(project, "docs", "Doxyfile").read_text(encoding="utf-8")
    settings += f"\nOUTPUT_DIRECTORY = {scratch}\nGENERATE_HTML = NO\nGENERATE_XML = YES\nXML_PROGRAMLISTING = NO\n"
    done = subprocess.run(["doxygen", "-"], input=settings, cwd=project, capture_output=True, text=True)
    functions = sum(path.read_text(encoding="utf-8").count('kind="function"') for path in pathlib.Path(scratch).rglob("*_8h.xml"))

print(f"{functions} functions documented")
print(done.stderr)
sys.exit(1 if done.returncode or "warning:" in done.stderr or functions < 1300 else 0)
