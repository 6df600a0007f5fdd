// Ten thousand boxes, edited with undo and redo. Written to editing-1.png, untouched, editing-2.png, edited,
// editing-3.png, with all of it undone, and editing-4.png, with it done again.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

#include <cmath>

namespace
{

/// What an edit changes of a node.
struct State
{
    OV::MeshNode* node;
    OV::Transform place;
    bool isHidden;
};

State StateOf(OV::MeshNode& node)
{
    return {&node, node.GetLocal(), (node.GetFlags() & OV::NodeFlagHidden) != 0};
}

/// Edits, each of which keeps what its nodes were before: to undo is to exchange the two.
class History
{
public:
    explicit History(OV::Host::Presentation& model) : m_model(model) {}

    void Do(std::vector<State> edit)
    {
        Exchange(edit);
        m_done.push_back(std::move(edit));
        m_undone.clear();
    }

    bool Undo() { return Take(m_done, m_undone); }
    bool Redo() { return Take(m_undone, m_done); }

private:
    using Edits = std::vector<std::vector<State>>;

    bool Take(Edits& from, Edits& to)
    {
        if (from.empty()) return false;
        Exchange(from.back());
        to.push_back(std::move(from.back()));
        from.pop_back();
        return true;
    }

    void Exchange(std::vector<State>& edit)
    {
        for (State& state : edit)
        {
            const State before = StateOf(*state.node);
            state.node->SetLocal(state.place);
            state.isHidden ? state.node->SetFlags(OV::NodeFlagHidden, false)
                           : state.node->ClearFlags(OV::NodeFlagHidden, false);
            state = before;
        }
        m_model.GetScene().MarkDirty(); // flags alone do not
        m_model.Refresh();              // what is shown may reach elsewhere
    }

    OV::Host::Presentation& m_model;
    Edits m_done;
    Edits m_undone;
};

constexpr int Side = 100; // boxes along each side of a square

std::vector<OV::MeshNode*> AddBoxes(OV::Scene& scene)
{
    auto* material = new OV::Material("box");
    material->SetDiffuse({0.3f, 0.5f, 0.8f, 1.0f});
    material->SetSpecular({0.0f, 0.0f, 0.0f, 1.0f});
    scene.AddMaterial(material);
    auto* mesh = new OV::Mesh(OV::Host::Primitives::Box({0, 0, 0}, {1, 1, 1}), &scene);
    material->AddMesh(mesh);
    std::vector<OV::MeshNode*> nodes;
    for (int i = 0; i < Side * Side; ++i)
    {
        OV::Transform place;
        place.SetPosition(OV::Vector(static_cast<float>(i % Side), 0.0f, static_cast<float>(i / Side)));
        nodes.push_back(new OV::MeshNode(&scene));
        nodes.back()->SetLocal(place);
        mesh->AddNode(nodes.back());
        scene.GetRoot()->AddChild(nodes.back(), false);
    }
    return nodes;
}

/// Lifts all boxes to a wave.
std::vector<State> Wave(const std::vector<OV::MeshNode*>& nodes)
{
    std::vector<State> edit;
    for (OV::MeshNode* node : nodes)
    {
        edit.push_back(StateOf(*node));
        OV::Vector position = edit.back().place.GetPosition();
        position.y = 4.0f * std::sin(0.15f * position.x) * std::sin(0.15f * position.z);
        edit.back().place.SetPosition(position);
    }
    return edit;
}

/// Takes out the boxes of a quarter. They are hidden, so that they can come back.
std::vector<State> Cut(const std::vector<OV::MeshNode*>& nodes)
{
    std::vector<State> edit;
    for (OV::MeshNode* node : nodes)
    {
        const OV::Vector position = node->GetLocal().GetPosition();
        if (position.x >= Side / 2 && position.z >= Side / 2)
        {
            edit.push_back(StateOf(*node));
            edit.back().isHidden = true;
        }
    }
    return edit;
}

} // namespace

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;

    auto scene = std::make_unique<OV::Scene>();
    const std::vector<OV::MeshNode*> nodes = AddBoxes(*scene);
    OV::Host::Presentation model(std::move(scene));
    model.SetCamera(OV::Vector(150.0f, 80.0f, 150.0f), OV::Vector(50.0f, 0.0f, 50.0f));
    const auto save = [&](const char* name) { return model.SavePicture(name, 640, 480, error); };
    if (!save("editing-1.png")) return 1;

    History history(model);
    history.Do(Wave(nodes));
    history.Do(Cut(nodes));
    if (!save("editing-2.png")) return 1;
    while (history.Undo()) {}
    if (!save("editing-3.png")) return 1;
    while (history.Redo()) {}
    return save("editing-4.png") ? 0 : 1;
}
