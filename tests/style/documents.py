"""documents.py SOURCE: the places that docs/oddities.md names hold the words that it quotes, and the code of
docs/editing.md stands in the examples, which are compiled."""

import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
rows = re.findall(r'\| `([^`]+)`: "([^"]+)" \|$', (root / "docs/oddities.md").read_text(), re.MULTILINE)


def words(text):
    """One line, without the marks of comments."""
    return re.sub(r"\s*\n\s*(//+ ?)?", " ", text)


faults = [f'{place} does not say "{quote}"' for place, quote in rows
          if not (root / place).is_file() or quote not in words((root / place).read_text())]


def code(text):
    """The lines, however far they and their comments are indented."""
    return "\n".join(" ".join(line.split()) for line in text.strip().splitlines())


blocks = re.findall(r"^```cpp\n(.*?)^```$", (root / "docs/editing.md").read_text(), re.MULTILINE | re.DOTALL)
examples = [code(path.read_text()) for path in sorted((root / "examples").glob("*.cpp"))]
faults += [f"docs/editing.md: no example has this code:\n{block}" for block in blocks
           if not any(code(block) in example for example in examples)]
faults += [] if blocks else ["docs/editing.md has no code"]
print("\n".join(faults) if faults else f"{len(rows)} places are there")
sys.exit(bool(faults) or not rows)
