// A model file in a window of its own: drag to turn it. A second word closes it after one frame.
#include <orvane_host/orvane_host.h>

#include <GLFW/glfw3.h>

int main(int count, char** words)
{
    GLFWwindow* const window = glfwInit() ? glfwCreateWindow(960, 600, "Model", nullptr, nullptr) : nullptr;
    if (!window) return 1;
    glfwMakeContextCurrent(window);
    std::string error;
    auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    if (!model) return 1;
    OV::Host::OrbitCamera camera;
    model->Resize(960, 600);
    camera.ReadFrom(model->GetCamera());
    for (double x = 0.0, y = 0.0, oldX = 0.0, oldY = 0.0; !glfwWindowShouldClose(window); oldX = x, oldY = y)
    {
        glfwGetCursorPos(window, &x, &y);
        OV::Host::PresentationSettings settings = model->GetSettings();
        if (glfwGetMouseButton(window, GLFW_MOUSE_BUTTON_LEFT)) camera.Orbit(x - oldX, y - oldY);
        OV::Host::WriteView(camera, settings.view);
        if (!model->Apply(settings, error)) return 1;
        int width = 0, height = 0;
        glfwGetFramebufferSize(window, &width, &height);
        model->Draw(width, height);
        glfwSwapBuffers(window);
        count > 2 ? glfwSetWindowShouldClose(window, GLFW_TRUE) : glfwWaitEvents();
    }
    model.reset(); // before its context
    glfwTerminate();
}
