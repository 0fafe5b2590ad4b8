# Builds the pages of the documentation: no warning, no broken link, every public function on them and to be found, and
# every name that a chapter of the manual mentions there is. Arguments: the folder of the project, a folder to build in.

import pathlib
import re
import subprocess
import sys

project, folder = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
done = subprocess.run([sys.executable, project / "docs/site/build.py", folder], stderr=subprocess.PIPE, text=True)
wrong = done.stderr.splitlines()

headers = [path for path in (project / "source/qv").rglob("*.h*") if not path.stem.endswith("_private")]
text = "\n".join(path.read_text(encoding="utf-8") for path in headers)
functions = set(re.findall(r"^QV_API [^(;]*?\b(qv[A-Z]\w+)\(", text, re.M))
families = re.findall(r"^QV_FAMILY\( (\w+),", text, re.M)
functions |= {f"qv{name}{end}" for name in families for end in ("Sort", "Retain", "Release", "Obj", "From", "Equals")}
found = "\n".join(path.read_text(encoding="utf-8") for path in folder.glob("search/functions_*.js"))
wrong += [f"{name} is not on the pages" for name in sorted(functions) if f"['{name}'" not in found]

for path in (project / "docs/manual").glob("*.md"):
    chapter = path.read_text(encoding="utf-8")
    own = "|".join(re.findall(r"^QV_FAMILY\( (\w+),", chapter, re.M)) or "-"
    for name in sorted(set(re.findall(r"\b(qv[A-Z]\w+|QV_[A-Z_]*[A-Z])\b(?!\.\.\.)", chapter)) - functions):
        if not re.search(rf"\b{name}\b", text) and not re.match(f"(?:qv|QV_)({own})", name, re.I):
            wrong.append(f"{path.name} mentions {name}, which there is not")

print(f"{len(functions)} functions on the pages", *wrong, sep="\n")
sys.exit(1 if done.returncode or wrong or len(functions) < 1300 else 0)
