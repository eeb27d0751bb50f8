// The peer's bare streaming read: dxflib hands each layer, line, insert and attribute to
// callbacks, and this program only counts them. No object model is built.
#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>

#include <cstdio>

namespace {

class Counter : public DL_CreationAdapter {
public:
    void addLayer(const DL_LayerData&) override { ++layers; }
    void addLine(const DL_LineData&) override { ++lines; }
    void addInsert(const DL_InsertData&) override { ++inserts; }
    void addAttribute(const DL_AttributeData&) override { ++attributes; }

    long layers = 0;
    long lines = 0;
    long inserts = 0;
    long attributes = 0;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FILE.dxf\n", argv[0]);
        return 2;
    }
    Counter counter;
    DL_Dxf dxf;
    if (!dxf.in(argv[1], &counter)) {
        std::fprintf(stderr, "%s: cannot be read\n", argv[1]);
        return 1;
    }
    std::printf("%ld layers, %ld lines, %ld inserts, %ld attributes\n", counter.layers,
                counter.lines, counter.inserts, counter.attributes);
    return 0;
}
