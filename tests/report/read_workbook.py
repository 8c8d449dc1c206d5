#!/usr/bin/env python3
"""Prints, as JSON, what a person sees in a workbook (path given): for each
sheet its rows (dates as ISO text, numbers as numbers), its frozen cell, its
autofilter range and whether its header row is bold."""
import datetime
import json
import sys

import openpyxl


def value(cell):
    if isinstance(cell.value, datetime.datetime):
        return cell.value.isoformat()
    return cell.value


book = openpyxl.load_workbook(sys.argv[1])
sheets = []
for sheet in book.worksheets:
    sheets.append({"name": sheet.title,
                   "rows": [[value(cell) for cell in row] for row in sheet.iter_rows()],
                   "freeze": sheet.freeze_panes,
                   "filter": sheet.auto_filter.ref,
                   "bold": all(cell.font.b for cell in sheet[1])})
print(json.dumps(sheets))
