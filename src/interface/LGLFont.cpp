// LGLFont.cpp -- bitmap fonts: creation through the platform rasteriser, colours, grid writes, the
// text buffer and the pixel writes with alignment, shadow and tab columns.
#include <ostrum_gl/interface/LGLFont.h>

#include <ostrum_core/LString.h>
#include <ostrum_gl/platform/LGLFontRasterizer.h>
#include <ostrum_gl/platform/LGLPlatform.h>

#include <GL/freeglut.h>
#include <GL/gl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

std::vector<int> LGLFont::tabStops;
std::vector<std::string> LGLFont::textBuffer;

namespace {

constexpr int kListsPerFont = 256;

// glWindowPos2i is OpenGL 1.4; it is fetched from the driver rather than linked.
using WindowPos2iProc = void(APIENTRY*)(GLint, GLint);

void setWindowRasterPos(int x, int y)
{
    static WindowPos2iProc windowPos2i =
        reinterpret_cast<WindowPos2iProc>(LGLPlatform::getProcAddress("glWindowPos2i"));
    if (windowPos2i != nullptr) {
        windowPos2i(x, y);
        return;
    }
    // Without glWindowPos: the same position through identity matrices and the current viewport.
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glOrtho(viewport[0], viewport[0] + viewport[2], viewport[1], viewport[1] + viewport[3], -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glRasterPos2i(x, y);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

// Moves the raster position by dx pixels without drawing. The pointer is not null because Mesa drops
// a null-pointer glBitmap when a game compiles its text into a display list of its own.
void moveRasterPos(float dx)
{
    static const GLubyte noPixels[1] = {0};
    glBitmap(0, 0, 0.0f, 0.0f, dx, 0.0f, noPixels);
}

}  // namespace

// ================================================================ set-up

LGLFont::LGLFont()
    : alignment(1),
      shadow(false),
      tabLines(false),
      fonts(),
      numFonts(0),
      color{0.5f, 0.5f, 0.5f},
      color_rp{1.0f, 1.0f, 1.0f, 1.0f},
      pos_rp{0, 0},
      lineSpacing_rp(20),
      currentFont(0),
      windowWidth(1),
      windowHeight(1)
{
    resetTabStops();
}

LGLFont::LGLFont(const LGLFont& other)
    : alignment(other.alignment),
      shadow(other.shadow),
      tabLines(other.tabLines),
      numFonts(other.numFonts),
      color(other.color),
      color_rp(other.color_rp),
      pos_rp(other.pos_rp),
      lineSpacing_rp(other.lineSpacing_rp),
      currentFont(other.currentFont),
      windowWidth(other.windowWidth),
      windowHeight(other.windowHeight)
{
    for (int i = 0; i < MAX_FONTS; ++i)
        fonts[i] = other.fonts[i];
    resetTabStops();
}

LGLFont::~LGLFont()
{
    dispose();
}

void LGLFont::resetTabStops()
{
    tabStops.resize(NUM_TAB_STOPS, 0);
    setTabWidth(40);
}

void LGLFont::create(HDC /*dc*/, const char* faceName, int height, int weight, unsigned long italic)
{
    if (numFonts >= MAX_FONTS) {
        std::printf("ERROR: NumFonts>10\n");
        std::fflush(stdout);
        std::exit(-1);
    }
    shadow = false;
    const GLuint base = glGenLists(kListsPerFont);
    if (base == 0)
        return;

    LGLFontRasterizer::tFontRequest request;
    request.faceName = faceName != nullptr ? faceName : "";
    request.height = height;
    request.weight = weight;
    request.italic = italic != 0;
    request.symbolSet = LString::LowerCase(request.faceName) == "symbol";

    GLGLFont& font = fonts[numFonts];
    if (!LGLFontRasterizer::buildLists(request, base, font.widths))
        std::printf("** WARNING LGLFont::create> no font face found for \"%s\" (LGLFont.cpp)\n",
                    request.faceName.c_str());
    font.base = base;
    font.height = height;
    ++numFonts;
}

void LGLFont::selectFont(int fontId)
{
    if (fontId < 0 || fontId >= numFonts) {
        std::printf("ERROR LGLFont::selectFont> illegal font_id %d\n", fontId);
        std::fflush(stdout);
        std::exit(-15);
    }
    currentFont = fontId;
}

void LGLFont::dispose()
{
    // numFonts is kept on purpose: a later dispose or the destructor deletes the same names again.
    for (int i = 0; i < numFonts && i < MAX_FONTS; ++i)
        glDeleteLists(fonts[i].base, kListsPerFont);
}

// ================================================================ colours

void LGLFont::latchColor(float r, float g, float b)
{
    glColor3f(r, g, b);
    // Bitmap text takes the colour current when the raster position was set, so set it again.
    GLfloat position[4];
    glGetFloatv(GL_CURRENT_RASTER_POSITION, position);
    const int height = glutGet(GLUT_WINDOW_HEIGHT);
    glRasterPos2f(position[0], static_cast<float>(height) - position[1]);
}

void LGLFont::storeAndLatch(float r, float g, float b)
{
    color = {r, g, b};
    latchColor(r, g, b);
}

void LGLFont::cWhite() { storeAndLatch(1.0f, 1.0f, 1.0f); }
void LGLFont::cBlack() { storeAndLatch(0.0f, 0.0f, 0.0f); }
void LGLFont::cRed() { storeAndLatch(1.0f, 0.0f, 0.0f); }
void LGLFont::cGreen() { storeAndLatch(0.0f, 1.0f, 0.0f); }
void LGLFont::cDarkGreen() { storeAndLatch(0.0f, 0.5f, 0.0f); }
void LGLFont::cBlue() { storeAndLatch(0.0f, 0.0f, 1.0f); }
void LGLFont::cDarkBlue() { storeAndLatch(0.0f, 0.0f, 0.5f); }
void LGLFont::cYellow() { storeAndLatch(1.0f, 1.0f, 0.0f); }
void LGLFont::cPurple() { storeAndLatch(1.0f, 0.0f, 1.0f); }
void LGLFont::cCyan() { storeAndLatch(0.0f, 1.0f, 1.0f); }
void LGLFont::cGray(float level) { storeAndLatch(level, level, level); }

void LGLFont::setColor(float r, float g, float b)
{
    latchColor(r, g, b);
}

void LGLFont::setColor_rp(float r, float g, float b)
{
    color_rp.r = r;
    color_rp.g = g;
    color_rp.b = b;
}

void LGLFont::setColor_rp(float r, float g, float b, float a)
{
    color_rp = {r, g, b, a};
}

// ================================================================ grid writes

float LGLFont::widthOf(const char* text) const
{
    const GLGLFont& font = fonts[currentFont];
    float width = 0.0f;
    for (const unsigned char* c = reinterpret_cast<const unsigned char*>(text); *c != 0; ++c)
        width += static_cast<float>(font.widths[*c]);
    return width;
}

void LGLFont::puts(const GLGLFont& font, const char* text)
{
    glPushAttrib(GL_LIST_BIT);
    glListBase(font.base);
    glCallLists(static_cast<GLsizei>(std::strlen(text)), GL_UNSIGNED_BYTE, text);
    glPopAttrib();
}

void LGLFont::write(const std::string& text)
{
    const float width = widthOf(text.c_str());
    if (alignment == 0)
        moveRasterPos(-width / 2.0f);
    else if (alignment < 0)
        moveRasterPos(-width);
    puts(fonts[currentFont], text.c_str());
}

void LGLFont::writeAt(int col, int row, const std::string& text)
{
    const int h = fonts[currentFont].height;
    setWindowRasterPos(static_cast<int>(static_cast<double>(col * h) * 0.4), row * h);
    write(text);
}

void LGLFont::writeAt(int col, int row, const char* text)
{
    writeAt(col, row, std::string(text != nullptr ? text : ""));
}

int LGLFont::pixWidthOf(const std::string& text)
{
    return static_cast<int>(widthOf(text.c_str()));
}

void LGLFont::push(std::string line)
{
    textBuffer.push_back(line);
}

void LGLFont::writeBuffer()
{
    const int h = fonts[currentFont].height;
    for (size_t i = 0; i < textBuffer.size(); ++i) {
        setWindowRasterPos(static_cast<int>(h * 0.4), static_cast<int>(i + 1) * h);
        write(textBuffer[i]);
    }
}

void LGLFont::clearBuffer()
{
    textBuffer.clear();
}

// ================================================================ pixel writes

void LGLFont::begin()
{
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    windowWidth = glutGet(GLUT_WINDOW_WIDTH);
    windowHeight = glutGet(GLUT_WINDOW_HEIGHT);
    glOrtho(0.0, windowWidth, windowHeight, 0.0, -1.0, 1.0);
}

void LGLFont::end()
{
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

void LGLFont::writeAt_rp_inner(int x, int y, const char* text, float r, float g, float b, int& width)
{
    const GLGLFont& font = fonts[currentFont];
    const float w = widthOf(text);
    int startX = x;
    if (alignment < 0)
        startX = static_cast<int>(static_cast<float>(x) - w);
    else if (alignment == 0)
        startX = static_cast<int>(static_cast<float>(x) - w * 0.5f);

    GLfloat saved[4];
    if (shadow) {
        glGetFloatv(GL_CURRENT_COLOR, saved);
        glColor3f(0.3f, 0.3f, 0.3f);
        glRasterPos2i(startX + 1, y + 1);
        puts(font, text);
        glColor4fv(saved);
    }
    glGetFloatv(GL_CURRENT_COLOR, saved);
    glColor3f(r, g, b);
    glRasterPos2i(startX, y);
    puts(font, text);
    glColor4fv(saved);
    width = static_cast<int>(w);
}

void LGLFont::writeAt_rp(int x, int y, const char* text, float r, float g, float b)
{
    int width = 0;
    writeAt_rp_inner(x, y, text != nullptr ? text : "", r, g, b, width);
}

void LGLFont::writeAt_rp(int x, int y, const std::string& text, float r, float g, float b)
{
    writeAt_rp(x, y, text.c_str(), r, g, b);
}

void LGLFont::writeAt_rp(int x, int y, const std::string& text)
{
    writeAt_rp(x, y, text.c_str(), color_rp.r, color_rp.g, color_rp.b);
}

void LGLFont::writeAt_rp_tab(int x, int y, const std::string& text, float r, float g, float b)
{
    const std::vector<std::string> columns = LString::split(text, "\t/");
    glEnable(GL_LINE_STIPPLE);
    glLineStipple(1, 0x0101);
    int colX = x;
    int total = 0;
    for (size_t i = 0; i < columns.size(); ++i) {
        int width = 0;
        writeAt_rp_inner(colX, y, columns[i].c_str(), r, g, b, width);
        total += width;
        int step = total;
        for (int stop : tabStops) {
            if (stop >= total) {
                step = stop;
                break;
            }
        }
        // Kept on purpose: the step is measured from this column's start while total counts every
        // column so far, so the columns drift further apart than the tab stops say.
        const int newX = colX + step;
        if (tabLines && i + 1 < columns.size()) {
            glColor3f(0.6f, 0.6f, 0.6f);
            glBegin(GL_LINES);
            glVertex2i(colX + width + 2, y);
            glVertex2i(newX - 2, y);
            glEnd();
        }
        colX = newX;
    }
    glDisable(GL_LINE_STIPPLE);
}

void LGLFont::writeAt_rp_tab(int x, int y, const std::string& text)
{
    writeAt_rp_tab(x, y, text, color_rp.r, color_rp.g, color_rp.b);
}

void LGLFont::writeLine_rp_tab(const std::string& text)
{
    writeAt_rp_tab(pos_rp.x, pos_rp.y, text);
    pos_rp.y += lineSpacing_rp;
}

void LGLFont::writeLine_rp_tab(int line, const std::string& text)
{
    writeAt_rp_tab(pos_rp.x, pos_rp.y + lineSpacing_rp * line, text);
}

void LGLFont::writeLine_rp_tab(int col, int line, const std::string& text)
{
    writeAt_rp_tab(pos_rp.x + col, pos_rp.y + lineSpacing_rp * line, text);
}

void LGLFont::getPos_rp(int& x, int& y)
{
    x = pos_rp.x;
    y = pos_rp.y;
}

void LGLFont::setPos_rp(int x, int y)
{
    pos_rp = {x, y};
}

void LGLFont::setLineSpacing_rp(int spacing)
{
    lineSpacing_rp = spacing;
}

int LGLFont::getLineSpacing_rp()
{
    return lineSpacing_rp;
}

void LGLFont::setTabWidth(int w)
{
    for (size_t i = 0; i < tabStops.size(); ++i)
        tabStops[i] = static_cast<int>(i + 1) * w;
}
