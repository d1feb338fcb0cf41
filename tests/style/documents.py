"""documents.py SOURCE: the places that docs/oddities.md names hold the words that it quotes."""

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
print("\n".join(faults) if faults else f"{len(rows)} places are there")
sys.exit(bool(faults) or not rows)
