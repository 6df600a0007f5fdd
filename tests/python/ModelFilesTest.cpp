#include "python/native/Model.h"
#include "python/native/Refused.h"
#include "orvane_host/import/ModelImporter.h"
#include "tests/orvane_host/import/TinyModels.h"
#include "tests/support/TemporaryFolder.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::ImportResult;
using Python::Model;

struct PythonModelFiles : testing::Test
{
    ImportResult Triangle() const
    {
        const std::string path = folder.Path("triangle.obj");
        WriteFile(path, "o triangle\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        return Host::ModelImporter::Import(path, Host::ImportOptions());
    }

    /// No importer gives one today.
    static ImportResult WithoutNodes()
    {
        ImportResult result;
        result.status = Host::ImportStatus::Done;
        result.scene = std::make_unique<Scene>();
        return result;
    }

    /// Adds a line below the model's first file.
    Python::NodeId AddLine() { return AddLine(model->FindNode(model->ListNodes().front())); }

    Python::NodeId AddLine(std::optional<Python::NodeId> parent)
    {
        Python::LineValues line;
        line.points = {{0, 0, 0}, {1, 1, 0}};
        return model->AddLine(line, "line", parent, Transform());
    }

    TemporaryFolder folder;
    std::shared_ptr<Model> model = std::make_shared<Model>(Triangle());
};

TEST_F(PythonModelFiles, AFileThatIsRefusedLeavesWhatWasPutBelowTheOldOne)
{
    const Python::NodeId line = AddLine();
    EXPECT_THROW(model->ReplaceFile(0, WithoutNodes()), Python::Refused);
    EXPECT_EQ(model->PathOf(model->AddCopy(line, "copy", std::nullopt, Transform())), "copy");
}

TEST_F(PythonModelFiles, AFileThatIsTakenTakesWhatWasPutBelowTheOldOneAway)
{
    const Python::NodeId line = AddLine();
    model->ReplaceFile(0, Triangle());
    EXPECT_THROW(model->AddCopy(line, "copy", std::nullopt, Transform()), Python::Refused);
    // Looks at all that was put into the model and is left.
    const std::size_t nodes = model->ListNodes().size();
    model->Remove(AddLine(std::nullopt));
    EXPECT_EQ(model->ListNodes().size(), nodes);
}

} // namespace

} // namespace OV::Test
