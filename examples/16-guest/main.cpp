// A model file in a program that has GL of its own: it draws into a framebuffer of the program's, between
// two things that the program draws, and leaves the program's GL state as it was. A second word closes the
// window after one frame. Written to guest.png.
#include <orvane_host/orvane_host.h>

#define GL_GLEXT_PROTOTYPES
#include <GLFW/glfw3.h>
#include <GL/glext.h>

#include <algorithm>
#include <vector>

namespace
{

constexpr int Width = 800;
constexpr int Height = 500;
constexpr int Panel = 160; // width of the program's own panel, on the left

/// The program's own framebuffer, which stays bound.
/// @return its GL name, 0 on failure.
GLuint MakeFramebuffer()
{
    GLuint framebuffer = 0;
    GLuint buffers[2] = {};
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glGenRenderbuffers(2, buffers);
    glBindRenderbuffer(GL_RENDERBUFFER, buffers[0]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, Width, Height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, buffers[0]);
    glBindRenderbuffer(GL_RENDERBUFFER, buffers[1]);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, Width, Height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, buffers[1]);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE ? framebuffer : 0;
}

/// The state in which the program likes to draw; it is set once and relied on in every frame.
void SetOwnState()
{
    glClearColor(0.15f, 0.2f, 0.3f, 1.0f);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, Panel, Height);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_ALWAYS);
    glEnable(GL_CULL_FACE);
    glFrontFace(GL_CW);
    glColor3f(1.0f, 0.75f, 0.2f);
    glMatrixMode(GL_PROJECTION);
    glOrtho(0.0, Width, 0.0, Height, -1.0, 1.0);
    glViewport(0, 0, Width, Height);
}

/// The panel, with a triangle that only these settings show.
void DrawPanel()
{
    glClear(GL_COLOR_BUFFER_BIT);
    glBegin(GL_TRIANGLES);
    glVertex2i(40, 200);
    glVertex2i(40, 300);
    glVertex2i(120, 250);
    glEnd();
}

bool SavePanelAndModel()
{
    const std::size_t row = 4 * Width;
    std::vector<unsigned char> pixels(row * Height);
    glReadPixels(0, 0, Width, Height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    for (std::size_t y = 0; y < Height / 2; ++y) // GL has the bottom row first
    {
        const auto low = pixels.begin() + static_cast<std::ptrdiff_t>(row * y);
        std::swap_ranges(low, low + row, pixels.end() - static_cast<std::ptrdiff_t>(row * (y + 1)));
    }
    std::string error;
    return OV::Host::WritePNG(pixels, Width, Height, "guest.png", OV::Host::PNGAlpha::Drop, error);
}

} // namespace

int main(int count, char** words)
{
    GLFWwindow* const window = glfwInit() ? glfwCreateWindow(Width, Height, "Guest", nullptr, nullptr) : nullptr;
    if (!window) return 1;
    glfwMakeContextCurrent(window);
    std::string error;
    auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    const GLuint framebuffer = MakeFramebuffer();
    if (!model || framebuffer == 0) return 1;
    SetOwnState();
    bool isSaved = false;
    while (!glfwWindowShouldClose(window))
    {
        {
            const OV::Host::GLStateGuard guard; // for as long as somebody else draws
            model->Draw(Width, Height);
        }
        DrawPanel();
        isSaved = isSaved || SavePanelAndModel();

        glDisable(GL_SCISSOR_TEST);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        glBlitFramebuffer(0, 0, Width, Height, 0, 0, Width, Height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
        glEnable(GL_SCISSOR_TEST);
        glfwSwapBuffers(window);
        count > 2 ? glfwSetWindowShouldClose(window, GLFW_TRUE) : glfwWaitEvents();
    }
    model.reset(); // before its context
    glfwTerminate();
    return isSaved ? 0 : 1;
}
