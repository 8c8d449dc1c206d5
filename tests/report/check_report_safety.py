#!/usr/bin/env python3
"""Parses a report as a browser does (html5lib) and prints every element of its
body that could run: script-like elements, event attributes, script or data
addresses. Exits 1 when it finds any. (The head is the report's own.)"""
import re
import sys

import html5lib

RUNNING_ELEMENTS = {"script", "iframe", "object", "embed", "applet", "frame", "frameset", "base", "meta",
                    "link", "form", "svg", "math", "style", "textarea", "noscript", "template"}
FORBIDDEN_SCHEME = re.compile(r"^(javascript|vbscript|data):", re.IGNORECASE)


def address(value):
    # Browsers drop blanks and control characters in an address.
    return re.sub(r"[\x00-\x20]", "", value)


def main():
    with open(sys.argv[1], encoding=sys.argv[2] if len(sys.argv) > 2 else "utf-8") as source:
        document = html5lib.parse(source.read(), namespaceHTMLElements=False)
    found = []
    for element in document.find("body").iter():
        if not isinstance(element.tag, str):
            continue
        if element.tag.lower() in RUNNING_ELEMENTS:
            found.append("element <%s>" % element.tag)
        for name, value in element.attrib.items():
            if name.lower().startswith("on"):
                found.append("<%s %s=%r>" % (element.tag, name, value))
            if FORBIDDEN_SCHEME.match(address(value)) or "javascript:" in address(value).lower():
                found.append("<%s %s=%r>" % (element.tag, name, value))
    for line in found:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
