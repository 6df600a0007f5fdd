#pragma once

#include "orvane_host/import/ModelImporter.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>

#include <string>

namespace OV::Test
{

/// Base of tests that write small models with their pictures and import them.
class ImportFixture : public testing::Test
{
protected:
    template <typename Content>
    Host::ImportResult ImportAs(const std::string& name, const Content& content,
                                const Host::ImportOptions& options = Host::ImportOptions())
    {
        WriteFile(m_folder.Path(name), content);
        Host::ImportResult result = Host::ModelImporter::Import(m_folder.Path(name), options);
        EXPECT_TRUE(result) << result.error.Line();
        return result;
    }

    static Material& OnlyMaterial(const Host::ImportResult& result)
    {
        const auto& opaque = result.scene->GetOptimizedMaterials();
        const auto& alpha = result.scene->GetAlphaMaterials();
        EXPECT_EQ(opaque.size() + alpha.size(), 1u);
        return opaque.empty() ? *alpha.at(0) : *opaque.at(0);
    }

    TemporaryFolder m_folder;
};

} // namespace OV::Test
