#pragma once

// Everything that the host kit offers.
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/SceneRenderer.h"
#include "orvane_host/sheet/Sheet.h"
#include "orvane_host/sheet/Watermark.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane_host/view/ViewFit.h"
