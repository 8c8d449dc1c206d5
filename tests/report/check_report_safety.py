#!/usr/bin/env python3
"""Parses a report's body as a browser does (html5lib) and prints, as JSON:
"active", what could run (script-like elements, event attributes, script or data
addresses; exits 1 when any); "skeleton", each element with its attribute names;
"rows" and "paragraphs", their texts, no-break spaces as spaces."""
import json
import re
import sys

import html5lib

RUNNING_ELEMENTS = {"script", "iframe", "object", "embed", "applet", "frame", "frameset", "base", "meta",
                    "link", "form", "svg", "math", "style", "textarea", "noscript", "template", "img"}
FORBIDDEN_SCHEME = re.compile(r"^(javascript|vbscript|data):", re.IGNORECASE)


def address(value):
    # Browsers drop blanks and control characters in an address.
    return re.sub(r"[\x00-\x20]", "", value)


def text(element):
    return "".join(element.itertext()).replace("\xa0", " ")


def main():
    with open(sys.argv[1], encoding=sys.argv[2] if len(sys.argv) > 2 else "utf-8") as source:
        document = html5lib.parse(source.read(), namespaceHTMLElements=False)
    body = document.find("body")
    active, skeleton = [], []
    for element in body.iter():
        if not isinstance(element.tag, str):
            continue
        skeleton.append(" ".join([element.tag] + sorted(element.attrib)))
        if element.tag.lower() in RUNNING_ELEMENTS:
            active.append("element <%s>" % element.tag)
        for name, value in element.attrib.items():
            if name.lower().startswith("on") or FORBIDDEN_SCHEME.match(address(value)) or \
                    "javascript:" in address(value).lower():
                active.append("<%s %s=%r>" % (element.tag, name, value))
    print(json.dumps({"active": active, "skeleton": skeleton,
                      "rows": [[text(cell) for cell in row.findall("td")] for row in body.iter("tr")],
                      "paragraphs": [text(p) for p in body.iter("p")]}))
    return 1 if active else 0


if __name__ == "__main__":
    sys.exit(main())
