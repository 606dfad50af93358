package VEL::Upgrade;

use strict;
use warnings;
use feature 'signatures';

use VEL::Model;
use VEL::Path qw(split_path split_component);
use VEL::Version;

=head1 NAME

VEL::Upgrade - upgrades old command data to the current language version

=head1 DESCRIPTION

The C<UPGRADE> blocks of the rules say what changed in which version. Data states its
version at F</LANGUAGE/Version>; data without a version is older than all. The steps of
later versions run in the order of the versions. A step applies to every object of its
type anywhere. A step without an effect is not a change. Nothing is overwritten: if a new
name is already in use, that change is not made.

If the data states no version and no step changes it, it stays as it is. All other data
then states the version of the rules.

=head1 METHODS

=over

=item C<< VEL::Upgrade->new($model) >>

For a L<VEL::Model>.

=cut

sub new ($class, $model) {
    return bless { model => $model, database => $model->database, failed => 0 }, $class;
}

=item C<run($changes)>

Makes the changes and fills the array with them (see L<VEL::Record>). Dies if the database
fails; the changes before the failure stay and are in the array.

=item C<failed>

Whether the database has refused a change.

=cut

# What each action does. VEL::Rules::Source has what it needs, VEL::Record the words for
# what it changed; another kind of change also needs a line in velRecords.h.
our %STEP = (
    'Rename Parameter'   => \&_rename_parameter,
    'Remove Parameter'   => \&_remove_parameter,
    'Add Parameter'      => \&_add_parameter,
    'Change Value'       => \&_change_value,
    'Rename Object Type' => \&_rename_type,
    'Remove Object'      => \&_remove_object,
    'Move Parameter'     => \&_move_parameter,
);

sub run ($self, $changes) {
    $self->{changes} = $changes;
    @$changes = ();
    my $rules  = $self->{model}->rules;
    my $stated = $self->_value('/LANGUAGE/Version');
    my $newest = $rules->version;
    for my $upgrade ($self->_later_than($stated)) {
        my ($version) = $upgrade->{name} =~ /([0-9.]+)$/;
        $newest = $version if !defined $rules->version;
        for my $step (@{ $upgrade->{blocks} }) {
            $self->_run_step($step->{fields});
        }
    }
    $self->_set_version($stated, $newest) if defined $newest;
    return;
}

sub failed ($self) { return $self->{failed} }

=back

=cut

# The objects inside a renamed object have new paths. They come directly after it in the
# list.
sub _run_step ($self, $step) {
    my $run   = $STEP{ $step->{'Action'} };
    my @paths = $self->_objects($step->{'Object Type'});
    while (defined(my $path = shift @paths)) {
        next if !$self->{database}->havePath($path);
        my $moved = $self->$run($path, $step) // next;
        for my $inside (@paths) {
            last if index($inside, "$path/") != 0;
            substr $inside, 0, length $path, $moved;
        }
    }
    return;
}

sub _later_than ($self, $stated) {
    my @upgrades = map { [ $_, $_->{name} =~ /([0-9.]+)$/ ] } $self->{model}->rules->upgrades;
    return map { $_->[0] }
        sort { VEL::Version::compare($a->[1], $b->[1]) }
        grep { !defined $stated || VEL::Version::compare($stated, $_->[1]) < 0 } @upgrades;
}

sub _set_version ($self, $stated, $newest) {
    return if defined $stated ? VEL::Version::compare($stated, $newest) >= 0 : !@{ $self->{changes} };
    return if !$self->_have_object('/LANGUAGE') || $self->{database}->isObject('/LANGUAGE/Version');
    $self->_must($self->{database}->createParam('/LANGUAGE/Version', $newest));
    $self->_note('set-version', '/LANGUAGE/Version', old => $stated, new => $newest);
    return;
}

# The objects of a type in the data, without those of libraries.
sub _objects ($self, $type) {
    my @paths;
    $self->{database}->getObjectsByType($type, \@paths);
    return grep { !m{^/RULES(?:/|\z)} && $self->{database}->isLibrary($_) == 0 } @paths;
}

sub _value ($self, $path) {
    my $value;
    $self->{database}->getStringValue($path, \$value);
    return $value;
}

sub _note ($self, $kind, $path, %of) {
    push @{ $self->{changes} }, { kind => $kind, path => $path, %of };
    return;
}

# A failure of the database here means that the tree is not as expected.
sub _must ($self, $error) {
    return if !$error;
    $self->{failed} = 1;
    die "updateSolverVEL: $error\n";
}

# Makes the object if it is missing. The result is false if a parameter has its name.
sub _have_object ($self, $path) {
    return $self->{database}->isObject($path) if $self->{database}->havePath($path);
    $self->_must($self->{database}->createObject($path, 0));
    return 1;
}

sub _has_parameter ($self, $path) {
    return $self->{database}->havePath($path) && !$self->{database}->isObject($path);
}

# --- Steps: each takes the path of one object and the fields of the step, and
# returns the new path if it moves the object -----------------------------------

# The new parameter is added at the end of the object. The parameters that came after the
# old one are added again after it, so that the order is kept.
sub _rename_parameter ($self, $path, $step) {
    my ($old, $new) = @$step{ 'Parameter', 'New Name' };
    my $database = $self->{database};
    return if !$self->_has_parameter("$path/$old") || $database->havePath("$path/$new");
    $database->getChildParamList($path, \my @names);
    shift @names while $names[0] ne $old;
    for my $name (@names) {
        my $value = $self->_value("$path/$name");
        $self->_must($database->deleteParam("$path/$name"));
        $self->_must($database->createParam($name eq $old ? "$path/$new" : "$path/$name", $value));
    }
    $self->_note('rename-parameter', "$path/$old", new_path => "$path/$new");
    return;
}

sub _remove_parameter ($self, $path, $step) {
    my $old = "$path/$step->{'Parameter'}";
    return if !$self->_has_parameter($old);
    my $value = $self->_value($old);
    $self->_must($self->{database}->deleteParam($old));
    $self->_note('remove-parameter', $old, old => $value);
    return;
}

sub _add_parameter ($self, $path, $step) {
    my $new = "$path/$step->{'Parameter'}";
    return if $self->{database}->havePath($new);
    $self->_must($self->{database}->createParam($new, $step->{'New Value'}));
    $self->_note('add-parameter', $new, new => $step->{'New Value'});
    return;
}

sub _change_value ($self, $path, $step) {
    my $at = "$path/$step->{'Parameter'}";
    return if !$self->_has_parameter($at);
    my $value = $self->_value($at);
    return if defined $step->{'Old Value'} && $value ne $step->{'Old Value'};
    return if $value eq $step->{'New Value'};
    $self->_must($self->{database}->setStringValue($at, $step->{'New Value'}));
    $self->_note('change-value', $at, old => $value, new => $step->{'New Value'});
    return;
}

sub _move_parameter ($self, $path, $step) {
    my $old    = "$path/$step->{'Parameter'}";
    my $target = "$path/$step->{'To Object'}";
    my $new    = "$target/" . ($step->{'New Name'} // $step->{'Parameter'});
    return if !$self->_has_parameter($old) || $self->{database}->havePath($new) || !$self->_have_object($target);
    $self->_must($self->{database}->createParam($new, $self->_value($old)));
    $self->_must($self->{database}->deleteParam($old));
    $self->_note('move-parameter', $old, new_path => $new);
    return;
}

sub _remove_object ($self, $path, $step) {
    $self->_must($self->{database}->deleteObj($path));
    $self->_note('remove-object', $path);
    return;
}

# The type is part of the path, so a new object is made and filled.
sub _rename_type ($self, $path, $step) {
    my ($parent, $component) = split_path($path);
    my (undef, $name) = split_component($component);
    return if defined $name && $name eq $step->{'New Name'};    # TYPE:TYPE would be a singleton
    my $renamed = defined $name ? "$step->{'New Name'}:$name" : $step->{'New Name'};
    my $new     = ($parent eq '/' ? '' : $parent) . "/$renamed";
    return if $self->{database}->havePath($new);
    $self->_copy($path, $new);
    $self->_must($self->{database}->deleteObj($path));
    $self->_note('rename-object', $path, new_path => $new);
    return $new;
}

sub _copy ($self, $from, $to) {
    my $database = $self->{database};
    my @open = ([ $from, $to ]);
    while (my $pair = shift @open) {
        my ($old, $new) = @$pair;
        $self->_must($database->createObject($new, 0));
        $database->getChildParamList($old, \my @names);
        $self->_must($database->createParam("$new/$_", $self->_value("$old/$_"))) for @names;
        $database->getChildObjectList($old, \my @objects);
        push @open, map { [ "$old/$_", "$new/$_" ] } @objects;
    }
    return;
}

1;
