// main.cpp -- a program outside the tree that uses both libraries through their umbrella headers.
#include <ostrum_gl/ostrum_gl.h>

#include <cstdio>
#include <string>

int main()
{
    std::string seen;
    LGLPlatform::setMessageHandler([](const std::string& text, const std::string& caption) {
        std::printf("handled %s: %s\n", caption.c_str(), text.c_str());
    });
    LGLPlatform::messageBox("installed copy works", "consumer");
    SVector3D v;
    v.x = 3;
    v.y = 4;
    v.z = 0;
    v.w = 1;
    std::printf("length %s\n", LString::dtoa(LGeom::pointDist(v, SVector3D())).c_str());
    return 0;
}
