#pragma once

#include <string>

namespace OV::Host
{

/// The schema that a STEP file (ISO 10303-21) states in its header, such as "IFC4", in capitals.
/// Empty for a file that is none or states none.
std::string ReadStepSchema(const std::string& path);

/// Whether a schema is one of buildings, read or not.
bool IsBuildingSchema(const std::string& schema);

/// Whether files of a schema are laid out as the parser takes them to be.
bool IsStepSchemaRead(const std::string& schema);

} // namespace OV::Host
