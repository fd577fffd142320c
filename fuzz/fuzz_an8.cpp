// fuzz_an8.cpp -- libFuzzer target for the An8 figure and sequence reader: Object3DS::readAnimation over
// bytes in memory, then the joint angles, playback, scaling, copies and dumps of what it read.
//
// readAnimation is loadFigure without its file: no OpenGL and no exit path. The seeds in
// fuzz/corpus/an8 are small Anim8or files (Anim8orTransl8or examples by Contingent Games, MIT; an
// excerpt of its Cat.an8) and files written for the tests.
#include <ostrum_gl/models/Object3DS.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

// Object3DS names this class its friend: the private steps that follow reading are reached here.
class Object3DSTest {
public:
    static void exercise(Object3DS& o)
    {
        for (double frame : {-1.0, 0.0, 0.5, 3.0, 1e9}) {
            o.curFrame = frame;
            for (const Object3DS::tJointAngle& track : o.jointAngles) {
                double ax = 0.0, ay = 0.0, az = 0.0;
                o.getAnimAngles(track.boneName, ax, ay, az);
            }
        }
        o.writeSequenceData();
        o.writeBoneData(o.root, 0);
    }
};

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // The reader's lines would drown the fuzzer's own report.
    if (std::freopen("/dev/null", "w", stdout) == nullptr)
        return 0;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    auto o = std::make_unique<Object3DS>();
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    o->readAnimation(in);
    Object3DSTest::exercise(*o);
    o->setCurFrame(0);
    for (int i = 0; i < 4; ++i) {
        o->handleAnimation();
        o->stepForward();
        o->stepBackwards();
    }
    o->scaleFigure((size & 1) ? 2.5 : 1e30);
    auto copy = std::make_unique<Object3DS>(*o);
    *o = std::move(*copy);
    o->disposeFigure();
    return 0;
}
