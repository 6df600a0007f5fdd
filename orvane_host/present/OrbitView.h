#pragma once

namespace OV::Host
{

class OrbitCamera;
struct ViewSettings;

/// Moves a camera to where settings look from. Its screen and model must be set. The roll of
/// settings whose up is not the up axis is lost.
void ReadView(const ViewSettings& view, OrbitCamera& camera);

/// Makes settings look from where a camera is, by eye, target and up.
void WriteView(const OrbitCamera& camera, ViewSettings& view);

} // namespace OV::Host
