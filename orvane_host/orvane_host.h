#pragma once

// Everything that the host kit offers.
#include "orvane_host/context/GLStateGuard.h"
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/geometry/FeatureEdges.h"
<<<<<<< HEAD
#include "orvane_host/geometry/FeatureLines.h"
#include "orvane_host/geometry/SectionFaces.h"
=======
#include "orvane_host/geometry/Polyline.h"
#include "orvane_host/geometry/Primitives.h"
>>>>>>> main
#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/ModelLoading.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/output/WritePNG.h"
<<<<<<< HEAD
#include "orvane_host/present/DrawCounts.h"
#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/present/Look.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/Presentation.h"
=======
#include "orvane_host/present/EdgeLook.h"
#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/present/Look.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationFrame.h"
>>>>>>> main
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/SceneRenderer.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/sheet/Sheet.h"
#include "orvane_host/sheet/Watermark.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane_host/view/ViewFit.h"
