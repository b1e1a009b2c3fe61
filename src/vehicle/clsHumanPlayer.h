#pragma once
// The racer: one object per element of modMain::Players, the player's (RacerKind 1) and the
// computer's (RacerKind 2) alike; both obey the same forces.
//
// Failures: the game has always skipped a failing step and gone on with the next. Here
// every step that could fail checks what it needs first (a block index inside TrackBlock,
// a racer index inside Players and RacerBox, a non-zero divisor) and is skipped when the
// check fails; nothing throws. Loading is the one place a fault must be seen: Load_Ship
// and Reset_Car_Attributes return false and write a log line naming the file and the
// fault when the catalogue or the mesh is missing. A mass or inertia of 0 (a blank or
// non-numeric line) is never divided by: it is logged and leaves 1 / value at 0, so that
// ship is not pushed (or not turned), with a complete, finite state all the same.
#include <memory>
#include <string>

#include "core/types.h"
#include "core/vbarray.h"
#include "gfx/mod3Denhance.h"
#include "platform/records.h"

class XFileClass;

class clsHumanPlayer {
 public:
  clsHumanPlayer();
  // Class_Terminate: releases the ship's mesh and shadow texture.
  ~clsHumanPlayer();
  clsHumanPlayer(const clsHumanPlayer&) = delete;
  clsHumanPlayer& operator=(const clsHumanPlayer&) = delete;

  // --- public fields (read by the race, HUD, hi-scores, ship selection) ---
  float HalfHeight = 0;  // half the mesh's y extent
  u8 RacerKind = 0;      // 1 the player, 2 computer-driven; set by ship selection
  // Controls; a flag counts only when it holds kTrue. Written by the key handlers for the
  // player, by Computer_Steering for the others.
  Bool16 Thrust = kFalse;
  Bool16 Brake = kFalse;
  Bool16 SteerLeft = kFalse;
  Bool16 SteerRight = kFalse;
  i16 cTopSpeed = 0;                 // highest displayed speed of this race, whole MPH
  i16 cRace_Position = 0;            // 1 = leading; kept current for the player only
  i16 cOnLap = 1;                    // 1..3 while racing, 4 after the finish
  IndexedArray<i32> cLapTime{1, 3};  // ms per lap
  i32 cRaceTime = 0;                 // ms, set at the finish
  i16 cCheatMinusLaps = 0;           // backward start-line crossings not yet driven again (<= 0)
  u8 cFinishedRace = 0;              // 1 once the third lap is complete
  i16 cCurrentlySelectedShip = 0;    // 0-based index into Ships.Dat
  i16 cCurrentlySelectedSkin = 1;    // 1..3
  float PositionX = 0, PositionY = 0, PositionZ = 0;
  float cOrientation = 0;  // heading; the nose points along (-sin, 0, cos)
  // World units per 10 ms; other racers write VelocityX / VelocityZ in a car bounce.
  float VelocityX = 0, VelocityY = 0, VelocityZ = 0;
  float cVelocityMag = 0;  // VelocityX^2 + VelocityZ^2; displayed speed = 60 x this
  Bool16 cWRONGWAY = kFalse;
  std::string ShipBaseName;  // the loaded ship's file name base ("" when none loaded)

  // The block under footprint corner 0: the racer's official progress.
  i16 cCurrentTrackBlock() const { return BlockOfCorner[0]; }
  // How far the body leans into the turn (radians about its long axis).
  float Bank() const;

  // --- per race ---
  // Race set-up, after Build_Track_Blocks: clears the race record, loads the ship (the
  // player's chosen one, a random one for a computer racer), puts the racer on grid slot
  // slot (its index in Players, 0..6) facing along the road. False when the ship could not
  // be loaded (logged); the racer is still placed and safe to run.
  bool Reset_Car_Attributes(i16 slot);

  // --- per frame, in the race loop's order ---
  // Force and torque of this frame from the controls (a computer racer steers first).
  void ComputeForces();
  // Side walls, then block tracking, laps and the wrong-way flag (uses the corners'
  // movement of the previous frame).
  void Check_Wall_Collisions();
  // Bounces off racers within 12 units whose box holds one of our corners; self is our own
  // index in Players. May change the other racers' velocities.
  void Check_Car_Collisions(i16 self);
  // One explicit Euler step of FrameTime / 10.
  void ApplyForces();
  // The same step for a part of the frame step_ms long (the race's slow-frame steps).
  void ApplyForces(float step_ms);
  // Footprint corners (the old ones kept for the swept tests) and RacerBox(index).
  void Calculate_Vertices(i16 index);
  // Hover over the road and place the shadow quad.
  void Get_Track_Height();
  // cRace_Position from laps, blocks and distance to the block's front edge.
  void Get_Race_Position();

  // --- drawing, from the race frame's rendering, through mod3Denhance::D3DDevice ---
  // Ship mesh at the racer's place and heading, banked by the turn rate (lighting on).
  void DrawBody();
  // Shadow quad over the footprint, just above the road (blending on, identity world).
  void DrawShadow();
  // Flame quad across the tail, opaque from speed 5; the caller binds its texture.
  void DrawThrust();

 private:
  friend struct RacerTestAccess;  // tests set the ship numbers and corners directly

  i16 GridSlot = 0;
  float HalfWidth = 0;
  float HalfLength = 0;
  float Restitution = 0.1f;
  float InvMass = 0;
  float InvInertia = 0;
  float ThrustForce = 0;
  float AngularDrag = 0;
  float LinearDrag = 0;
  float WallGrip = 0;
  float AngularVelocity = 0;  // radians per 10 ms
  Vector3 Force;
  float Torque = 0;
  Vector3 ShipCorners[4];  // 0 front-right, 1 front-left, 2 rear-right, 3 rear-left
  Vector3 PrevShipCorners[4];
  std::unique_ptr<XFileClass> ShipMesh;
  LitVertex ShadowVertices[4];
  LitVertex ThrustVertices[4];
  mod3Denhance::Surface ShadowTexture;
  i16 BlockOfCorner[4] = {0, 0, 0, 0};

  void Init_Ship_State();
  void Car_Bounce(i16 k);
  // corner is the element of ShipCorners that crossed; it moves with the push-back.
  void Wall_Bounce(const Vector3& hit, const Vector3& n, Vector3& corner);
  void Computer_Steering();
  // ship by reference: -999 asks for a random ship and skin; the index used is written back.
  bool Load_Ship(i16& ship);
  void Track_Corner_Blocks();
  // Bounces corner j off side edge side (0 right, 1 left) of its block if it crossed it.
  void Side_Wall(int side, int j);
  // ShipCorners (x, z) from position, heading and half-sizes.
  void Footprint_Corners();
  void Clear_Ship_Numbers();
};
