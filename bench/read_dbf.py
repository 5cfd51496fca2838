#!/usr/bin/env python3
"""A plain dBASE reader writing CSV, for bench/tables.sh where Python's
dbfread is not installed: header, fields, records in order (deleted ones
skipped), dBASE IV memos from the .dbt beside the table.

    read_dbf.py TABLE.dbf > out.csv
"""
import csv
import struct
import sys


def main():
    path = sys.argv[1]
    with open(path, "rb") as f:
        data = f.read()
    version, count, header_length, record_length = data[0], *struct.unpack_from("<IHH", data, 4)
    fields = []
    offset, pos = 1, 32
    while data[pos] != 0x0D:
        name = data[pos:pos + 11].split(b"\0")[0].decode("latin-1")
        fields.append((name, chr(data[pos + 11]), offset, data[pos + 16]))
        offset += data[pos + 16]
        pos += 32
    memo = None
    block = 512
    try:
        with open(path[:-4] + ".dbt", "rb") as m:
            memo = m.read()
        block = struct.unpack_from("<H", memo, 20)[0] or 512
    except OSError:
        pass
    out = csv.writer(sys.stdout, lineterminator="\r\n")
    out.writerow([f[0] for f in fields])
    for r in range(count):
        start = header_length + r * record_length
        record = data[start:start + record_length]
        if record[:1] == b"*":
            continue
        row = []
        for name, ftype, off, length in fields:
            raw = record[off:off + length]
            if ftype == "C":
                row.append(raw.rstrip(b" \0").decode("cp1252"))
            elif ftype in "NF":
                text = raw.strip()
                row.append(text.decode() if text else "")
            elif ftype == "D":
                text = raw.decode()
                row.append("%s-%s-%s" % (text[:4], text[4:6], text[6:]) if text.strip() else "")
            elif ftype == "L":
                row.append({"T": "True", "F": "False"}.get(raw.decode().upper(), ""))
            elif ftype == "M" and memo is not None and raw.strip():
                at = int(raw) * block
                length = struct.unpack_from("<I", memo, at + 4)[0] - 8
                row.append(memo[at + 8:at + 8 + length].decode("cp1252"))
            else:
                row.append("")
        out.writerow(row)


if __name__ == "__main__":
    main()
