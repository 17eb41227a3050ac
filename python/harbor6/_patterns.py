"""Patterns over paths, with the meaning that they have for the program."""

import re
from typing import Callable, Iterable, List, Pattern, Union

Patterns = Union[str, Iterable[str]]


def _translated(pattern: str) -> str:
    result, place = "", 0
    while place < len(pattern):
        at_name = place == 0 or pattern[place - 1] == "/"
        if pattern.startswith("**/", place) and at_name:
            result, place = result + "(?:.*/)?", place + 3
        elif pattern.startswith("**", place):
            result, place = result + ".*", place + 2
        elif pattern[place] == "*":
            result, place = result + "[^/]*", place + 1
        elif pattern[place] == "?":
            result, place = result + "[^/]", place + 1
        elif found := re.compile(r"\[([!^]?)(\]?[^\]]*)\]").match(pattern, place):
            inside = re.sub(r"([\\\[\]&~|^])", r"\\\1", found[2])
            result += "(?!/)[" + ("^" if found[1] else "") + inside + "]"
            place = found.end()
        else:
            result, place = result + re.escape(pattern[place]), place + 1
    return result


def matcher(patterns: Patterns) -> Callable[[str], bool]:
    """A function that tells whether one of the patterns takes a path.

    >>> takes = matcher(["*.txt", "docs/*.md"])
    >>> [takes(path) for path in ("a/b.txt", "docs/x.md", "a/docs/x.md", "x.txt/y")]
    [True, True, False, True]
    """
    expressions: List[Pattern[str]] = []
    for pattern in [patterns] if isinstance(patterns, str) else patterns:
        pattern = pattern.rstrip("/") or pattern
        before = "" if "/" in pattern else "(?:.*/)?"
        expressions.append(re.compile(f"{before}(?:{_translated(pattern)})(?:/.*)?", re.DOTALL))
    return lambda path: any(each.fullmatch(path) for each in expressions)
