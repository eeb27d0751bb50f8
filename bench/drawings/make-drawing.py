#!/usr/bin/env python3
"""Writes a large drawing for the benchmarks: as an Orvex drawing (.dwg) and, for the
peer readers, the same content as DXF (.dxf).

The layers come in three kinds, a quarter, a quarter and a half of them:
  WR_nnnnn  wire types with a wire type record in their extension dictionary,
  WL_nnnnn  wire types by the WIRELAYS list of the WD_M reference ("WL*"),
  N_nnnnn   ordinary layers.
The lines are spread over all layers, and the one WD_M reference stands last in model
space, where a walk of model space finds it last.

    make-drawing.py --layers 10000 --lines 100000 --out /tmp/big   # /tmp/big.dwg, .dxf
"""
import argparse
import json


def layer_names(count):
    names = []
    for i in range(count):
        if i % 4 == 0:
            names.append("WR_%05d" % i)
        elif i % 4 == 1:
            names.append("WL_%05d" % i)
        else:
            names.append("N_%05d" % i)
    return names


class Dwg:
    def __init__(self):
        self.next = 1
        self.lines = []

    def handle(self):
        h = self.next
        self.next += 1
        return "%X" % h

    def add(self, handle, owner, kind, **fields):
        obj = {"handle": handle, "owner": owner, "type": kind}
        obj.update(fields)
        self.lines.append(json.dumps(obj, separators=(",", ":"), ensure_ascii=False))


def write_dwg(path, names, line_count):
    d = Dwg()
    lt_table, layer_table, block_table, nod = d.handle(), d.handle(), d.handle(), d.handle()
    d.add(lt_table, "0", "LinetypeTable")
    linetypes = {}
    for name, comments in (("ByBlock", ""), ("ByLayer", ""), ("Continuous", "Solid line")):
        h = d.handle()
        linetypes[name] = h
        d.add(h, lt_table, "LinetypeTableRecord", comments=comments, dashes=[], name=name)
    d.add(layer_table, "0", "LayerTable")
    layer_handles = []
    zero = d.handle()
    d.add(zero, layer_table, "LayerTableRecord", color=7, lineWeight=-3,
          linetype=linetypes["Continuous"], name="0")
    for i, name in enumerate(names):
        h = d.handle()
        layer_handles.append(h)
        fields = dict(color=1 + i % 255, lineWeight=-3, linetype=linetypes["Continuous"],
                      name=name)
        if name.startswith("WR_"):
            xdict, xrec = d.handle(), d.handle()
            fields["xdict"] = xdict
            d.add(h, layer_table, "LayerTableRecord", **fields)
            d.add(xdict, h, "Dictionary", entries=[["ZEL_WIRETYPE", xrec]])
            data = [[1, "RED"], [2, str(i)], [3, "WIRE"]] + [[4, ""]] * 20 + [[90, 0], [290, 1]]
            d.add(xrec, xdict, "Xrecord", data=data)
        else:
            d.add(h, layer_table, "LayerTableRecord", **fields)
    d.add(block_table, "0", "BlockTable")
    model = d.handle()
    d.add(model, block_table, "BlockTableRecord", name="*Model_Space")
    for i in range(line_count):
        layer = layer_handles[i % len(layer_handles)] if layer_handles else zero
        x = float(i % 1000)
        y = float(i // 1000)
        d.add(d.handle(), model, "Line", color=256, layer=layer, start=[x, y, 0],
              end=[x + 0.5, y + 0.25, 0])
    paper = d.handle()
    d.add(paper, block_table, "BlockTableRecord", name="*Paper_Space")
    wdm = d.handle()
    d.add(wdm, block_table, "BlockTableRecord", name="WD_M")
    ref = d.handle()
    d.add(ref, model, "BlockReference", color=256, layer=zero, block=wdm, position=[0, 0, 0])
    d.add(d.handle(), ref, "Attribute", color=256, layer=zero, tag="WIRELAYS", text="WL*",
          position=[0, 0, 0])
    d.add(nod, "0", "Dictionary", entries=[])
    header = {"blockTable": block_table, "clayer": zero, "handseed": "%X" % d.next,
              "layerTable": layer_table, "linetypeTable": lt_table, "namedObjects": nod}
    with open(path, "w", encoding="utf-8") as out:
        out.write('{"format":"orvex-drawing","version":1,\n"header":')
        out.write(json.dumps(header, separators=(",", ":")))
        out.write(',\n"objects":[\n')
        out.write(",\n".join(d.lines))
        out.write("\n]}\n")


def write_dxf(path, names, line_count):
    """The same content in DXF R12 text: layers, the WD_M block with its attribute
    definition, the lines, and the WD_M insert with its WIRELAYS attribute."""
    out = []

    def g(code, value):
        out.append("%3d\n%s\n" % (code, value))

    g(0, "SECTION"); g(2, "HEADER"); g(9, "$ACADVER"); g(1, "AC1009"); g(0, "ENDSEC")
    g(0, "SECTION"); g(2, "TABLES")
    g(0, "TABLE"); g(2, "LTYPE"); g(70, 1)
    g(0, "LTYPE"); g(2, "CONTINUOUS"); g(70, 0); g(3, "Solid line"); g(72, 65); g(73, 0)
    g(40, 0.0)
    g(0, "ENDTAB")
    g(0, "TABLE"); g(2, "LAYER"); g(70, len(names) + 1)
    for i, name in enumerate(["0"] + names):
        g(0, "LAYER"); g(2, name); g(70, 0); g(62, 7 if i == 0 else 1 + (i - 1) % 255)
        g(6, "CONTINUOUS")
    g(0, "ENDTAB")
    g(0, "ENDSEC")
    g(0, "SECTION"); g(2, "BLOCKS")
    g(0, "BLOCK"); g(8, "0"); g(2, "WD_M"); g(70, 2); g(10, 0.0); g(20, 0.0); g(30, 0.0)
    g(0, "ATTDEF"); g(8, "0"); g(10, 0.0); g(20, 0.0); g(30, 0.0); g(40, 1.0); g(1, "")
    g(3, "WIRELAYS"); g(2, "WIRELAYS"); g(70, 0)
    g(0, "ENDBLK"); g(8, "0")
    g(0, "ENDSEC")
    g(0, "SECTION"); g(2, "ENTITIES")
    for i in range(line_count):
        layer = names[i % len(names)] if names else "0"
        x = float(i % 1000)
        y = float(i // 1000)
        g(0, "LINE"); g(8, layer); g(10, x); g(20, y); g(30, 0.0)
        g(11, x + 0.5); g(21, y + 0.25); g(31, 0.0)
    g(0, "INSERT"); g(8, "0"); g(66, 1); g(2, "WD_M"); g(10, 0.0); g(20, 0.0); g(30, 0.0)
    g(0, "ATTRIB"); g(8, "0"); g(10, 0.0); g(20, 0.0); g(30, 0.0); g(40, 1.0)
    g(1, "WL*"); g(2, "WIRELAYS"); g(70, 0)
    g(0, "SEQEND"); g(8, "0")
    g(0, "ENDSEC")
    g(0, "EOF")
    with open(path, "w", encoding="ascii") as f:
        f.write("".join(out))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--layers", type=int, required=True)
    parser.add_argument("--lines", type=int, required=True)
    parser.add_argument("--out", required=True, help="path without extension")
    parser.add_argument("--no-dxf", action="store_true")
    args = parser.parse_args()
    names = layer_names(args.layers)
    write_dwg(args.out + ".dwg", names, args.lines)
    if not args.no_dxf:
        write_dxf(args.out + ".dxf", names, args.lines)


if __name__ == "__main__":
    main()
