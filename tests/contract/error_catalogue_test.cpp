// Every exception type that the engine defines or handles: its base, and that it is made from one text alone.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>

#include "Sources/audio_player/audio_player.h"
#include "Sources/audio_player/errors.h"
#include "Sources/ob_show_control/errors.h"
#include "exc/assertion/ex_assertion_error.h"
#include "exc/result/noerr_error.h"
#include "suite/audio/errors.h"
#include "suite/core/errors.h"
#include "suite/player_core/errors.h"

namespace {

// A type beside its direct base.
template <typename ErrorType, typename BaseType>
struct Entry {
  using Error = ErrorType;
  using Base = BaseType;
};

using Catalogue =
    testing::Types<Entry<exc::NOERRError, std::runtime_error>, Entry<exc::ExAssertionError, std::logic_error>,
                   Entry<AudioPlayer::NoAudioForSong, std::out_of_range>,
                   Entry<AudioPlayer::AudioFormatError, std::runtime_error>,
                   Entry<SongNotLoaded, std::runtime_error>, Entry<EndOfShow, std::out_of_range>,
                   Entry<StartOfShow, std::out_of_range>, Entry<RecoveryReachedEndOfSong, std::runtime_error>,
                   Entry<PlayerWrapperError, std::runtime_error>, Entry<MP3NoMatchError, PlayerWrapperError>,
                   Entry<tesk_audio::TESKAudioError, std::runtime_error>,
                   Entry<tesk_audio::AudioSampleContentError, tesk_audio::TESKAudioError>,
                   Entry<tesk_audio::OggVorbisDecodeError, tesk_audio::TESKAudioError>,
                   Entry<tesk_ext::NoNextMarker, std::runtime_error>>;

// Where two constructors take a text, either of them would do for this one, and so neither does.
struct EitherText {
  operator std::string() const { return "text"; }
  operator const char*() const { return "text"; }
};

template <typename T>
class ErrorCatalogue : public testing::Test {};

TYPED_TEST_SUITE(ErrorCatalogue, Catalogue);

TYPED_TEST(ErrorCatalogue, EachTypeHasItsBase) {
  using Error = typename TypeParam::Error;
  using Base = typename TypeParam::Base;
  EXPECT_TRUE((std::is_base_of_v<Base, Error>));
  EXPECT_FALSE((std::is_same_v<Base, Error>));
  EXPECT_EQ(sizeof(Error), sizeof(Base)) << "it carries nothing but its text";
}

TYPED_TEST(ErrorCatalogue, EachTypeIsMadeFromOneTextWhichItPassesOn) {
  using Error = typename TypeParam::Error;
  EXPECT_TRUE((std::is_constructible_v<Error, const std::string&>));
  EXPECT_TRUE((std::is_constructible_v<Error, EitherText>)) << "a single constructor";
  EXPECT_FALSE((std::is_convertible_v<std::string, Error>));
  EXPECT_FALSE(std::is_default_constructible_v<Error>);
  EXPECT_STREQ(Error(std::string("12: no bow")).what(), "12: no bow");
}

// Siblings: who catches one of them must not get the other.
TEST(ErrorCatalogue, TheTwoKindsOfDecodingErrorsAreNoKindOfEachOther) {
  EXPECT_FALSE((std::is_base_of_v<tesk_audio::AudioSampleContentError, tesk_audio::OggVorbisDecodeError>));
  EXPECT_FALSE((std::is_base_of_v<tesk_audio::OggVorbisDecodeError, tesk_audio::AudioSampleContentError>));
  EXPECT_FALSE((std::is_base_of_v<EndOfShow, StartOfShow>));
}

}  // namespace
