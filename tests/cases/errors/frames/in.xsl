<?xml version="1.0"?>
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
<xsl:template match="/"><p><xsl:apply-templates/></p></xsl:template>
<xsl:template match="e"><xsl:if test="1"><i c="{last(1)}"/></xsl:if></xsl:template>
</xsl:stylesheet>