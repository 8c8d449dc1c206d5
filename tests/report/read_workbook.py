#!/usr/bin/env python3
"""Prints, as JSON, what a person sees in a workbook (path given): for each
sheet its rows (dates as ISO text, numbers as numbers, flags as booleans), its
frozen cell, its autofilter range, whether its header row is bold, its column
definitions as written ([first, last], 1-based), the targets of its links
by cell and the number formats of its dates."""
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
    cells = [cell for row in sheet.iter_rows() for cell in row]
    sheets.append({"name": sheet.title,
                   "rows": [[value(cell) for cell in row] for row in sheet.iter_rows()],
                   "freeze": sheet.freeze_panes,
                   "filter": sheet.auto_filter.ref,
                   "bold": all(cell.font.b for cell in sheet[1]),
                   "columns": sorted([d.min, d.max] for d in sheet.column_dimensions.values() if d.customWidth),
                   "links": {cell.coordinate: cell.hyperlink.target for cell in cells if cell.hyperlink},
                   "dateFormats": sorted({cell.number_format for cell in cells
                                          if isinstance(cell.value, datetime.datetime)})})
print(json.dumps(sheets))
