#pragma once
// The keys by which the wizard finds its rules lines, in the engine's reading order.
#include <string_view>

namespace tessaly::rules::key {

inline constexpr std::string_view kMaximumLead = "MAXIMUM LEAD";
inline constexpr std::string_view kDifference = "DIFFERENCE";
inline constexpr std::string_view kModelEstimation = "MODEL ESTIMATION";
inline constexpr std::string_view kSquares = "SQUARES";
inline constexpr std::string_view kParameterValues = "PARAMETER VALUES";
inline constexpr std::string_view kIterations = "ITERATIONS";
inline constexpr std::string_view kNecessityTest = "NECESSITY TEST:";
inline constexpr std::string_view kLevelForNecessity = "LEVEL FOR NECESSITY";
inline constexpr std::string_view kConstrain = "CONSTRAIN";
inline constexpr std::string_view kStochastic = "STOCHASTIC";
inline constexpr std::string_view kSS = "(SS)";
inline constexpr std::string_view kDeterministic = "DETERMINISTIC STRUCTURE";
inline constexpr std::string_view kDS = "(DS)";
inline constexpr std::string_view kToBeIdentified = "TO BE IDENTIFIED";
inline constexpr std::string_view kIncludePulse = "INCLUDE PULSE";
inline constexpr std::string_view kIncludeStep = "INCLUDE STEP";
inline constexpr std::string_view kObservationsInGroup = "OBSERVATIONS IN GROUP";
inline constexpr std::string_view kIncludeSeasonalPulse = "INCLUDE SEASONAL PULSE";
inline constexpr std::string_view kLocalTrend = "LOCAL TREND";
inline constexpr std::string_view kFixup = "FIXUP FOR FIXED EFFECTS";
inline constexpr std::string_view kEvaluateInEst = "EVALUATE IN EST";
inline constexpr std::string_view kLambdaList = "(4F4.0)";
inline constexpr std::string_view kDiscrete = "DISCRETE";
inline constexpr std::string_view kLevelForVariance = "LEVEL FOR VARIANCE";
inline constexpr std::string_view kResidualsToPool = "RESIDUALS TO POOL";
inline constexpr std::string_view kConstancyOfParameters = "CONSTANCY OF PARAMETERS";
inline constexpr std::string_view kConstancyTest = "CONSTANCY TEST";
inline constexpr std::string_view kModelForecasting = "MODEL FORECASTING";
inline constexpr std::string_view kValuesToCompute = "VALUES TO COMPUTE";
inline constexpr std::string_view kForTheForecasts = "FOR THE FORECASTS";
inline constexpr std::string_view kPositiveValues = "POSITIVE VALUES";
inline constexpr std::string_view kIntegers = "INTEGERS";
inline constexpr std::string_view kLastObservation = "LAST OBSERVATION";
inline constexpr std::string_view kPulseToSeasonal = "PULSE TO SEASONAL";
inline constexpr std::string_view kSimulationEnabled = "SIMULATION ENABLED";
inline constexpr std::string_view kNoiseSeries = "NOISE SERIES";
inline constexpr std::string_view kSeedValue = "SEED VALUE";
inline constexpr std::string_view kStore = "STORE";
inline constexpr std::string_view kIntermittent = "INTERMITTENT";
inline constexpr std::string_view kNumberOfGroups = "# OF GROUPS";
inline constexpr std::string_view kInitialModel = "INITIAL MODEL";

// Values of "INITIAL MODEL".
inline constexpr std::string_view kNoInitialModel = "            ";  // twelve blanks
inline constexpr std::string_view kStartmodInitialModel = "STARTMOD.123";

}  // namespace tessaly::rules::key
