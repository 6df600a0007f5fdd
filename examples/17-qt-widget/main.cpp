// A model file in a widget of Qt, among other widgets: drag to turn it. Qt draws with GL in the same context,
// and over the same pixels. A second word names a file for the picture, after which the program ends.
#include <orvane_host/orvane_host.h>

#include <QApplication>
#include <QComboBox>
#include <QMouseEvent>
#include <QOpenGLWidget>
#include <QPainter>
#include <QVBoxLayout>

#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace
{

class ModelWidget : public QOpenGLWidget
{
public:
    explicit ModelWidget(std::string file) : m_file(std::move(file)) {}

    ~ModelWidget() override
    {
        makeCurrent();
        m_model.reset(); // before its context
    }

    bool IsReady() const { return m_model != nullptr; }

    void SetLook(OV::Host::Look look)
    {
        if (!m_model) return;
        OV::Host::PresentationSettings settings = m_model->GetSettings();
        settings.look = look;
        Apply(settings);
    }

protected:
    void initializeGL() override
    {
        m_model = OV::Host::Presentation::Open(m_file, m_trouble);
        if (!m_model) return;
        m_model->Resize(width(), height());
        m_camera.ReadFrom(m_model->GetCamera());
    }

    void paintGL() override
    {
        if (m_model)
        {
            const OV::Host::GLStateGuard guard; // Qt relies on its own GL state
            // Widgets are measured in points, the framebuffer in pixels.
            const qreal ratio = devicePixelRatio();
            m_model->Draw(static_cast<int>(std::lround(width() * ratio)),
                          static_cast<int>(std::lround(height() * ratio)), static_cast<float>(ratio));
        }
        QPainter painter(this);
        painter.fillRect(QRect(0, height() - 40, width(), 40), QColor(38, 51, 76, 200));
        painter.setPen(Qt::white);
        painter.drawText(QRect(16, height() - 40, width() - 32, 40), Qt::AlignVCenter,
                         QString::fromStdString(m_trouble.empty() ? m_file : m_trouble));
    }

    void mousePressEvent(QMouseEvent* event) override { m_mouse = event->position(); }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        const QPointF way = event->position() - std::exchange(m_mouse, event->position());
        if (!m_model) return;
        m_camera.SetScreen(width(), height());
        m_camera.Orbit(way.x(), way.y());
        OV::Host::PresentationSettings settings = m_model->GetSettings();
        OV::Host::WriteView(m_camera, settings.view);
        Apply(settings);
    }

private:
    void Apply(const OV::Host::PresentationSettings& settings)
    {
        makeCurrent(); // what was drawn before may go
        m_model->Apply(settings, m_trouble);
        update();
    }

    std::string m_file;
    std::string m_trouble;
    std::unique_ptr<OV::Host::Presentation> m_model;
    OV::Host::OrbitCamera m_camera;
    QPointF m_mouse;
};

} // namespace

int main(int count, char** words)
{
    QApplication application(count, words);
    QWidget window;
    auto* const looks = new QComboBox;
    auto* const model = new ModelWidget(count > 1 ? words[1] : "model.ifc");
    for (const auto look : {OV::Host::Look::Advanced, OV::Host::Look::Monotone, OV::Host::Look::Crosshatch})
    {
        looks->addItem(OV::Host::NameOfLook(look), static_cast<int>(look));
    }
    QObject::connect(looks, &QComboBox::currentIndexChanged, model, [=](int row)
                     { model->SetLook(static_cast<OV::Host::Look>(looks->itemData(row).toInt())); });
    auto* const layout = new QVBoxLayout(&window);
    layout->addWidget(looks);
    layout->addWidget(model, 1);
    window.resize(800, 600);
    window.show();
    if (count < 3) return application.exec();

    // Frame after frame, with Qt's drawing between them.
    model->grabFramebuffer();
    looks->setCurrentText("monotone");
    model->grabFramebuffer();
    looks->setCurrentText("advanced");
    return model->grabFramebuffer().save(words[2]) && model->IsReady() ? 0 : 1;
}
