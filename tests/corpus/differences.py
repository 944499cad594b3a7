# SPDX-License-Identifier: GPL-3.0-or-later
"""Where the command line reads or saves something other than other programs see, with the reason, found by looking into
the bytes. A block is a reason and the lines "file field oracle" that it explains, fields and oracles joined by "+"; "nobody" means that no other program
reads the item at all. An entry that no longer differs is a fault."""

IMPORT = """
Compressed AIFF-C: 294 blocks of 160 samples each; mutagen counts the blocks as samples.
  audio/atldotnet__aiff.aiff durationSeconds mutagen
Deliberate: the rows of the import for CAF files have no keys of the info chunk (those for AIFF files have).
  audio/audio__ring.caf artist ffprobe
The bytes are code page 1252, as the CSET chunk says (E9 FF is "é" and "ÿ"); the others take them for UTF-8.
  audio/exifast__RIFF_cset_info.wav artist exiftool+ffprobe
An ID3 tag where the Ogg stream should begin: we read the tag, nothing but exiftool the stream behind it.
  audio/exifast__ogg_id3_prefixed.ogg artist+album exiftool
The size in the header of the ID3v2.2 tag has a byte over 7F; the others refuse the tag, we read its frames.
  audio/lofty-rs__test_full.id3v22.mp3 title+artist+album nobody
A single MPEG frame behind the tag: we give its length; ffprobe and mutagen want more than one.
  audio/music-metadata__issue-641.mp3 durationSeconds nobody
The file ends inside its ID3 tag; the others refuse the tag, we read the frames that are there.
  audio/taglib__compressed_id3_frame.mp3 title+artist+album nobody
  audio/taglib__w000.mp3 title+artist+album nobody
  audio/tinytag__utf16_no_bom.mp3 title+artist nobody
The file ends inside its moov, behind the item list; ffprobe reads the same texts, but is no oracle for ISO files.
  audio/tinytag__alac_file.m4a title+artist+album nobody
The file ends behind its LIST chunk, without audio; the others give up.
  audio/tinytag__detect_wav.x.wav title+artist+album nobody
Several values in one field: we join all with "; ", exiftool keeps the last, ffprobe joins with ";".
  audio/tinytag__multiple_values_images.flac album exiftool+ffprobe
  audio/tinytag__multiple_values_images.flac artist ffprobe
Several values, in three objects of the header: we keep the order in which the tag library collects them, mutagen has its
own, the others show one.
  audio/tinytag__multiple_values_images.wma title+artist+album exiftool+ffprobe+mutagen
An ID3 tag before the FLAC signature with other texts; the Vorbis comment is the file's own and counts.
  audio/tinytag__with_padded_id3_header2.flac title+artist+album exiftool
Latitude without a longitude, or the other way round: no position.
  photo/Piexif__01.jpg latitude exiftool
  photo/media__ss-motion-photo-shortened.jpg longitude exiftool
A raw photo in a TIFF: we give the size of the first image, as for every TIFF, exiftool that of the camera's Exif block.
  photo/exifast__Canon_EOS-1D_real.TIF width+height exiftool
The photo library reads the Exif of the preview; exiftool the sensor's size from the maker's header.
  photo/exiftool__FujiFilm.raf width+height exiftool
Sensor with its borders (we) or the image within them (exiftool).
  photo/exiftool__Panasonic.rw2 width+height exiftool
  photo/imagemeta__sample.arw width+height exiftool
The photo library does not know X3F.
  photo/exiftool__SigmaDP2.x3f width+height exiftool
A photo cut off before its image: we give the size that its Exif block claims, exiftool gives none.
  photo/exiv2__issue_1881_coverage.jpg width+height nobody
  photo/file-type__fixture-sony-zv-e10.arw width+height nobody
A latitude of 213 degrees is none.
  photo/photoprism__buggy_panorama.jpg latitude+longitude exiftool
The position stands under the key "©xyz" of the QuickTime metadata; the import knows location.ISO6709 only.
  video/exifast__MP4_movie_keys.mov latitude+longitude exiftool
An MPEG program stream of 0.04 s; mutagen takes it for an MP3 and estimates by the bit rate.
  video/file-type__fixture.ps.mpg durationSeconds mutagen
Deliberate: a position of two signs gives the latitude alone; the longitude is taken where a third sign follows it.
  video/ExoPlayer__video_1.mp4 longitude exiftool
  video/gpmf-parser__max-heromode.mp4 longitude exiftool
  video/media__h265_with_metadata_track.mp4 longitude exiftool
  video/metadata-extractor-images__with-gps.mp4 longitude exiftool
  video/nom-exif__meta.mp4 longitude exiftool
A track without a handler: exiftool does not know it as a video and reads the fixed-point size (2.0) as a whole number.
  video/fq__png_no_hdlr.mp4 width+height exiftool
mutagen gives the duration of the audio track, which ends before the video.
  video/media__sample_shorter_audio.mp4 durationSeconds mutagen
  video/metadata-extractor-images__FLIR_Thermal.mp4 durationSeconds mutagen
  video/picard__test.m4v durationSeconds mutagen
The sample description says 12x10, the H.264 stream inside 10x12; we read no streams.
  video/media__sample_with_fake_auxiliary_tracks_interleaved_with_primary_video_track.mp4 width+height ffprobe
Fragments from second 10 on: we give the length of the longest track, that of the captions; ffprobe leaves captions out and counts from 0.
  video/mp4ff__cbcsdec.mp4 durationSeconds ffprobe
One fragment of a longer video: its header announces 48 s (mehd), the file holds the first six.
  video/mp4ff__stpp_combined.mp4 durationSeconds ffprobe
The file ends before its index and its frames; its header says 600 frames, as exiftool reads it.
  video/exiftool__Pentax.avi durationSeconds nobody
Since FFmpeg 7: ffprobe takes an image under the name of a video for a video; there is no movie header.
  photo/fq__heic.mp4 width+height ffprobe
Since FFmpeg 7: the samples are cut off, and ffprobe estimates by the size of what is left; the movie header says what we say.
  video/exiftool__QuickTime.mov durationSeconds ffprobe
The header says 15 s, the fragments hold 16.35 s, as ffprobe says too.
  video/mutagen__no-tags.3g2 durationSeconds exiftool+mutagen
"""

SAVE = """
A hand-made stub that ffprobe does not open, neither before nor after.
  audio/exifast__MP4_audiokeys_mute.mp4 title ffprobe
An entry of its list reaches beyond the list: what cannot be read whole is not rewritten.
  video/mutagen__64bit.mp4 title copied
An image under the name of a video: there is no movie header to save into.
  photo/fq__heic.mp4 title copied
A hand-made stub whose second track announces 36 chunks in a table of two: it cannot be rewritten safely.
  video/exifast__QuickTime_sony_fx3_rtmd.mp4 title copied
The movie header alone, without the payload that its chunks point to.
  video/go-mp4__sample_qt.mp4 title copied
"""

CLEAR = """
Chapters and how a video is played are structure, which stays.
  video/atldotnet__0.mp4 clear exiftool
  video/media__sample_sef_slow_motion.mp4 clear exiftool
  video/metadata-extractor-images__with-gps.mp4 clear exiftool
The number of the system that recorded the video stands in the sample description of a timed track, too, which stays.
  video/media__dolbyVision-hdr.MOV clear texts
The movie header alone, without the payload that its chunks point to.
  video/go-mp4__sample_qt.mp4 clear streams
What a track says of itself (camera, dates, names, the maker's properties) is metadata, too, and goes.
  video/nom-exif__sony-a7-xavc.MP4 clear structure
  video/file-type__fixture.mov clear structure
  video/photoprism__quicktime-hvc1.mov clear structure
Until ExifTool 13: the same of audio tracks, whose items it counted among the structure of the track.
  audio/exifast__MP4_audiokeys_mute.mp4 clear structure
  video/tag__sample.mp4 clear structure
The QuickTime metadata stands in the user data, where exiftool does not look; saved, it is in its own place.
  video/media__sample_android_slow_motion.mp4 clear exiftool-save
"""

AUDIO = """
Cut to its first kilobytes, or made without audio: no program here decodes a sample of it.
  audio/Audio-Scan__wma-live.wma save failed
  audio/exifast__FLAC_id3v24_footer.flac clear failed
  audio/exifast__RIFF_cset_info.wav save failed
  audio/exiftool__AIFF.aif save failed
  audio/exiftool__Opus.opus save failed
  audio/lofty-rs__issue_174_waveformatextensible-ieeefloat-44100Hz-mono95060.wav save failed
  audio/lofty-rs__test_full.id3v22.mp3 save failed
  audio/mutagen__flac_application.flac clear failed
The payload that the movie header points to is cut off, or there is no header.
  audio/Audio-Scan__leading-mdat.m4a save failed
  audio/music-metadata__issue-151.m4a save failed
  audio/mutagen__nero-chapters.m4b clear failed
  audio/tinytag__alac_file.m4a save failed
"""

# The video jobs: "file job what". Videos of the corpus and made ones.
VIDEO_JOBS = """
Another program writes these old codecs into QuickTime, where players do not show them; here they are refused.
  made/odd.mkv slow+mov failed
  made/windows.wmv slow+mov failed
  video/Audio-Scan__wmv92.wmv mov failed
  video/exiftool__Flash.flv slow+mov failed
  video/exiv2__flame.avi slow+mov failed
  video/music-metadata__elephant.asf mov failed
Until FFmpeg 7: the same of this audio codec, which it refuses since.
  video/file-type__fixture.avi slow+mov failed
Until FFmpeg 7: hard edges of pure colours, whose halved colours are spread in another way.
  made/bt2020.mp4 frames ssim
A name of 255 bytes has no room for what these jobs add.
  made/nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn.mp4 audio+frames failed
Reading ends after the first of its frames.
  video/exiftool__Flash.flv mute failed
Since FFmpeg 7: its filter compares no single frame without a duration.
  video/exiftool__Flash.flv frames+gif ssim
Since FFmpeg 7: ffprobe measures the tracks where the movie header claims more; 2X keeps the first half of what the header claims, all of it.
  made/million-seconds.mp4 speed audio-length+duration+frames
Half of 13.7 s, which is the length of its captions; ffprobe's half is more than the video lasts.
  video/mp4ff__cbcsdec.mp4 speed duration+frames
Until FFmpeg 7: its own decoder takes one frame of each packet of speech, the rest is silence.
  video/metadata-extractor-images__sample_3GPP2.3g2 audio+speed audio
Since FFmpeg 7: of the first packet of speech it drops the priming once a frame, 20 ms of audio.
  video/file-type__fixture2.3gp audio+speed audio
Since FFmpeg 7: ffprobe takes an image under the name of a video for a video, so the test asks for jobs on it.
  photo/fq__heic.mp4 frames+gif+mov+mute+rotate90+slow+speed failed
Pure colours side by side: their halved colours fall on other lines when the frame was rotated first.
  made/rgb.mov rotate90+rotate270 ssim
Hard edges of pure colours, whose halved colours are spread in another way.
  made/narrow.mov frames ssim
"""

# Photo commands: "file command what"; "every": all of them.
PHOTO = """
Kinds that nobody rewrites safely yet, or at all; the reason is given.
  photo/exiftool__CanonRaw.cr3 every refused
  photo/exiftool__CanonRaw.crw every refused
  photo/exiftool__FujiFilm.raf every refused
  photo/exiftool__Minolta.mrw every refused
  photo/exiftool__Panasonic.rw2 every refused
  photo/exiv2__RAW_PENTAX_K30.exv every refused
  photo/libheif__seq_seed.heif every refused
  photo/nom-exif__canon-r6.cr3 every refused
A GIF image has no place for positions and fields; the reason is given.
  photo/exempi__BlueSquare.gif apply+camera+change-gps+gps refused
  photo/exiftool__GIF.gif apply+camera+change-gps+gps refused
Its list has nothing that a photo takes; the reason is given.
  photo/Pillow__balloon_eciRGBv2_aware.jp2 import refused
  photo/exempi__BlueSquare.gif import refused
  photo/exiftool__GIF.gif import refused
Layers have names, and readers find the flags of a document beside the names of the programs that wrote it.
  photo/exiftool__Photoshop.psd all texts
  photo/libavif__seine.psd all texts
XML lists have a line feed where the caption had a carriage return.
  photo/exiv2__Reagan.jp2 import tags
Nothing is left of its XMP but its frame, which names no program.
  photo/exiftool__GIF.gif no-iptc tags
A damaged directory leads to the checksum of IPTC that it does not have.
  broken/exiv2__tiffimage_int-out-of-bound-read-poc-2.tif no-iptc left
No photo, or one that cannot be read, under a name of a photo; the reason is given.
  photo/exiftool__KyoceraRaw.raw every refused
  photo/exiftool__SigmaDP2.x3f every refused
  photo/exiv2__Reagan.jxl every refused
  photo/exiv2__issue_1881_coverage.jpg every refused
  photo/libheif__lightning_mini.heif every refused
  photo/nom-exif__motion_photo_pixel_synth.jpg every refused
  photo/testdata__1x1_exif_xmp.jxl every refused
A raw photo cannot be developed without its Exif data; the reason is given.
  photo/exifast__Canon_EOS-1D_real.TIF all+change-gps+no-exif+no-exif-gps refused
  photo/exifast__Canon_EOS-7D_sRAW_real.CR2 all+change-gps+no-exif+no-exif-gps refused
  photo/exifast__Sony_ILME-FX3_real.ARW all+change-gps+no-exif+no-exif-gps refused
  photo/exiftool__Nikon.nef all+change-gps+no-exif+no-exif-gps refused
  photo/exiftool__PhaseOne.iiq all+change-gps+no-exif+no-exif-gps refused
  photo/file-type__fixture-sony-zv-e10.arw all+change-gps+no-exif+no-exif-gps refused
  photo/imagemeta__jolstravatnet.pef all+change-gps+no-exif+no-exif-gps refused
  photo/imagemeta__sample.arw all+change-gps+no-exif+no-exif-gps refused
  photo/imagemeta__sample.cr2 all+change-gps+no-exif+no-exif-gps refused
  photo/imagemeta__sample.nef all+change-gps+no-exif+no-exif-gps refused
The photo has no property that a list can name.
  photo/libavif__colors-animated-8bpc-audio.avif import refused
  photo/libheif__rainbow-451x461.heic import refused
  photo/imagemeta__utf8-in-ztxt.png import refused
Deliberate: a latitude over 90 degrees is none.
  photo/Piexif__01.jpg export Latitude
  photo/photoprism__buggy_panorama.jpg export Latitude
Bytes that are no text: exiftool keeps them, we read them as letters.
  photo/Piexif__r_casio.jpg import tags
  photo/exiv2__issue_1881_coverage.jpg export Make
Degrees, minutes and seconds from decimal degrees: they differ by less than a metre, fractions by their last digits.
  photo/exif-samples__IMG_5195.HEIC import tags
  photo/test-assets__IMG_2682.heic import tags
  photo/commons-imaging__2024-04-30_G012.JPG import tags
  photo/exiv2__IMG_1361.dng import tags
  photo/metadata-extractor-images__Nokia_Lumia_800.jpg import tags
A list names the side of the sea where the photo has an altitude alone.
  photo/commons-imaging__test.webp import tags
With a new position, what belongs to the old one goes.
  photo/Pillow__ifd_tag_type.tiff import tags
Its entries were out of order already; another one is named now.
  photo/Piexif__01.jpg change-gps+no-exif warnings
A block without an image in it: nothing says whether it belongs to one.
  photo/exifast__Exif_manyifd.tif apply+camera warnings
Converters develop by the camera's name, profiles and the names of parts.
  photo/exiftool__DNG.dng all texts
  photo/exiv2__IMG_1361.dng all texts
  photo/photoprism__canon_eos_6d.dng all texts
The maker's data is a copy in the DNG's private data, or a segment of its own.
  photo/exiftool__DNG.dng no-exif left
  photo/exiftool__ExifTool.jpg no-exif left
Not dc:creator: the letters of a name count in XML.
  photo/exiftool__DNG.dng no-iptc left
A second IPTC block within the maker's data, which a raw photo keeps.
  photo/exiftool__Nikon.nef no-iptc left
The camera's thermal data holds the place, too; the outcome says that it stays.
  photo/metadata-extractor-images__FLIR_iPhone_device.jpg no-exif-gps+no-gps left
Spaces at the end of a text are not read, so they are not written again.
  photo/exiv2__Stonehenge.heic import tags
exiftool reads no Exif item of this file, neither before nor after.
  photo/media__sample_MP.heic apply+camera+change-gps+gps written
The names of handlers belong to the tracks of a sequence.
  photo/libavif__colors-animated-8bpc-audio.avif all texts
The phone's trailer, which is no part of the Exif data.
  photo/metadata-extractor-images__Issue_487.heic no-exif left
No well-formed XML: the packet goes whole, as the outcome says.
  photo/exiv2__exiv2-bug1026.jpg no-exif+no-gps+no-iptc tags
exiftool takes the length of the first directory for that of the second.
  photo/exiv2__exiv2-kodak-dc210.jpg gps warnings
A pointer to nowhere, which leads into what was added.
  broken/exiv2__issue_400_poc2.png change-gps left
  photo/nom-exif__endless_loop.jpg apply+camera+gps warnings
Its first block: of resolution and size nothing is known that it would have to say.
  photo/test-assets__portrait.jpg apply+camera+change-gps+gps warnings
"""
