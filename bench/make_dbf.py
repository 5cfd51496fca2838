#!/usr/bin/env python3
"""Writes a dBASE IV table of N records (default 1,000,000) of eight fields,
one a memo, with its .dbt memo file (512-byte blocks), for bench/tables.sh.

    make_dbf.py OUT.dbf [N]
"""
import datetime
import struct
import sys

FIELDS = [  # name, type, length, decimals
    ("ID", "N", 8, 0), ("NAME", "C", 30, 0), ("CITY", "C", 20, 0), ("PRICE", "N", 10, 2),
    ("QTY", "N", 6, 0), ("SOLD", "D", 8, 0), ("ACTIVE", "L", 1, 0), ("NOTES", "M", 10, 0),
]
CITIES = ["Aarhus", "Bergen", "Cork", "Dundee", "Espoo", "Faro", "Graz", "Haarlem"]
BLOCK = 512  # what dBASE IV writes by default (and dbfread assumes)


def main():
    out = sys.argv[1]
    n = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    record_length = 1 + sum(f[2] for f in FIELDS)
    header_length = 32 + 32 * len(FIELDS) + 1
    memo_path = out[:-4] + ".dbt"
    with open(out, "wb") as dbf, open(memo_path, "wb") as dbt:
        header = struct.pack("<BBBBIHH", 0x8B, 124, 11, 24, n, header_length, record_length) + bytes(20)
        dbf.write(header)
        for name, ftype, length, decimals in FIELDS:
            dbf.write(name.encode().ljust(11, b"\0") + ftype.encode() + bytes(4)
                      + bytes([length, decimals]) + bytes(14))
        dbf.write(b"\r")
        memo_header = bytearray(BLOCK)
        struct.pack_into("<H", memo_header, 20, BLOCK)
        dbt.write(memo_header)
        next_block = 1
        day0 = datetime.date(2000, 1, 1)
        chunk = []
        for i in range(n):
            memo = ("Note %d: delivered to %s, checked twice." % (i, CITIES[i % 8])).encode()
            body = b"\xff\xff\x08\x00" + struct.pack("<I", len(memo) + 8) + memo
            blocks = (len(body) + BLOCK - 1) // BLOCK
            dbt.write(body.ljust(blocks * BLOCK, b"\0"))
            sold = day0 + datetime.timedelta(days=i % 7000)
            record = (b" " + str(i).rjust(8).encode()
                      + ("Item %07d" % i).ljust(30).encode()
                      + CITIES[i % 8].ljust(20).encode()
                      + ("%.2f" % ((i % 100000) / 7.0)).rjust(10).encode()
                      + str(i % 1000).rjust(6).encode()
                      + sold.strftime("%Y%m%d").encode()
                      + (b"T" if i % 3 else b"F")
                      + str(next_block).rjust(10).encode())
            next_block += blocks
            chunk.append(record)
            if len(chunk) == 10000:
                dbf.write(b"".join(chunk))
                chunk = []
        dbf.write(b"".join(chunk))
        dbf.write(b"\x1a")
        dbt.seek(0)
        dbt.write(struct.pack("<I", next_block))


if __name__ == "__main__":
    main()
