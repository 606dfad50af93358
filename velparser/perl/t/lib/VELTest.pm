package VELTest;

# Helpers of the Perl tests: databases with rules and data, and their findings as text.

use strict;
use warnings;
use feature 'signatures';

use Exporter 'import';
use FindBin;

use API;
use VEL::Parser::Lite;
use VEL::Validate;

our @EXPORT = qw(source_folder database api with_libraries validator findings findings_left all_paths
    formatted lines);

=head1 NAME

VELTest - command data and findings as text, for the tests

=cut

# The top of the sources.
sub source_folder () { return $ENV{VEL_SOURCE_DIR} // "$FindBin::Bin/../../.." }

sub lines ($text) { return [ split /\n/, $text ] }

# A database with rules (library data) and data, both as text.
sub database ($rules, $data = '') {
    my $database = VEL::Parser::Lite::NEW();
    for my $error ($database->loadLibraryData(lines($rules)), $database->loadVELData(lines($data))) {
        die $error if $error;
    }
    return $database;
}

sub api ($rules, $data = '') { return API->new(database($rules, $data)) }

# An API with the libraries that ship, read as the program reads them.
sub with_libraries () {
    local $ENV{ZOT5_VEL_LIBSDIR} = source_folder() . '/libraries';
    local $ENV{ZOT5_VEL_LIBS}    = 'rules.vel;upgrades.vel';
    my $api   = API->new;
    my $error = $api->readLibraries;
    die $error if $error;
    return $api;
}

# The paths of all objects but the rules, parents before what is in them.
sub all_paths ($database) {
    my @open = ('/');
    my @paths;
    while (defined(my $path = shift @open)) {
        push @paths, $path;
        $database->getChildObjectList($path, \my @objects);
        my $below = $path eq '/' ? '' : $path;
        unshift @open, grep { $_ ne '/RULES' } map { "$below/$_" } @objects;
    }
    return @paths;
}

# A validator with all checks on.
sub validator ($database) {
    my $validator = VEL::Validate->new($database);
    for my $error ($validator->setUnitsChecking(1), $validator->setBoundsChecking(1)) {
        die $error if $error;
    }
    return $validator;
}

# The findings of all objects, a line each; units and bounds are checked when
# the last argument is given.
sub findings ($database, $all_checks = 0) {
    my $validator = $all_checks ? validator($database) : VEL::Validate->new($database);
    return join '', map { "$_\n" } grep { defined } map { $validator->validateObject($_) } all_paths($database);
}

# What the program sees when it validates again: only objects that are not
# marked valid are looked at.
sub findings_left ($validator, $database) {
    return join '', map { "$_\n" } grep { defined } map { $validator->validateObject($_) }
        grep { !($database->isValid($_) & 1) } all_paths($database);
}

# The user data as it would be saved.
sub formatted ($database) {
    $database->getFormattedVEL('/', 79, \my @lines);
    return join '', map { "$_\n" } @lines;
}

1;
