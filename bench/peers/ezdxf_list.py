#!/usr/bin/python3
"""The peer's answer to "open the drawing and list its wire types", with ezdxf: read the
DXF, take the WIRELAYS patterns of the WD_M insert, and list the layers they catch."""
import fnmatch
import sys

import ezdxf


def main():
    doc = ezdxf.readfile(sys.argv[1])
    patterns = []
    for insert in doc.modelspace().query("INSERT[name=='WD_M']"):
        for attrib in insert.attribs:
            if attrib.dxf.tag == "WIRELAYS":
                patterns = [p for p in attrib.dxf.text.split(",") if p]
        break
    wires = [layer.dxf.name for layer in doc.layers
             if any(fnmatch.fnmatchcase(layer.dxf.name.upper(), p) for p in patterns)]
    print(len(wires), "wire layers by list of", len(doc.layers), "layers")


if __name__ == "__main__":
    main()
